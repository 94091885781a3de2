// XML text beside pugixml, which builds a document in memory and saves it, and beside write() of the ready bytes. All
// three make the same file anew: frames of a timing report, four attributes each, most of whose time goes into making
// texts of numbers and names; and a log of lines that are there already.

#include "benchmarks/support/side_by_side.h"
#include "support/report/xml_text.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <pugixml.hpp>
#include <sstream>
#include <type_traits>

using namespace SUPPORT;

namespace {

constexpr unsigned frame_count = 20000, line_count = 20000;

unsigned microseconds(unsigned frame) { return frame * 2654435761u >> 16; }

// In whole microseconds, or in milliseconds, of which theirs prints more digits.
template <class NUMBER>
struct FRAMES {
    static constexpr bool same_texts = std::is_same_v<NUMBER, unsigned>;

    static NUMBER time(unsigned frame)
    {
        return NUMBER(microseconds(frame)) * (same_texts ? NUMBER(1) : NUMBER(0.001));
    }

    static void write_ours(XML_WRITER &xml)
    {
        for (unsigned i = 0; i < frame_count; ++i) {
            xml.begin_element(XML_ELEMENT(u"frame"));
            xml.attribute({u"number", i});
            xml.attribute({u"main", time(i)});
            xml.attribute({u"gpu", time(i + 1)});
            xml.attribute({u"late", microseconds(i) % 2 != 0});
            xml.text(XML_TEXT(time(i + 2)));
            xml.end_element();
        }
    }
    static void build_theirs(pugi::xml_node root)
    {
        for (unsigned i = 0; i < frame_count; ++i) {
            pugi::xml_node frame = root.append_child("frame");
            frame.append_attribute("number") = i;
            frame.append_attribute("main") = time(i);
            frame.append_attribute("gpu") = time(i + 1);
            frame.append_attribute("late") = microseconds(i) % 2 != 0;
            frame.text() = time(i + 2);
        }
    }
};

struct LINES {
    static constexpr bool same_texts = true;
    static constexpr char const *narrow = "texture raw_data/props/crate_diffuse.tga: 1024 x 1024, 11 levels, DXT1, "
                                          "used by raw_data/props/crate.vx2 and 12 others";
    static inline XML_TEXT const wide{KN::from_utf8(narrow)};
    static inline XML_ELEMENT const line{u"line"};

    static void write_ours(XML_WRITER &xml)
    {
        for (unsigned i = 0; i < line_count; ++i) {
            xml.begin_element(line);
            xml.text(wide);
            xml.end_element();
        }
    }
    static void build_theirs(pugi::xml_node root)
    {
        for (unsigned i = 0; i < line_count; ++i)
            root.append_child("line").append_child(pugi::node_pcdata).set_value(narrow);
    }
};

template <class DOCUMENT>
void write_ours(std::string const &path)
{
    XML_FILE_WRITER xml(path);
    xml.begin_element(XML_ELEMENT(u"report"));
    DOCUMENT::write_ours(xml);
    xml.end_element();
}

template <class DOCUMENT>
void write_theirs(std::string const &path)
{
    pugi::xml_document document;
    document.append_child(pugi::node_declaration).append_attribute("version") = "1.0";
    DOCUMENT::build_theirs(document.append_child("report"));
    document.save_file(path.c_str());
}

std::string contents(std::string const &path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

template <class DOCUMENT>
void XmlText(benchmark::State &state)
{
    std::string const folder = std::filesystem::temp_directory_path().string();
    std::string const ours = folder + "/ours.xml", theirs = folder + "/theirs.xml", copy = folder + "/copy.xml";
    write_ours<DOCUMENT>(ours);
    std::string const bytes = contents(ours);

    SIDE_BY_SIDE times;
    for (auto _ : state) {
        // Some systems wait for the disk when a file that is still on its way there is truncated.
        for (std::string const &path : {ours, theirs, copy})
            std::filesystem::remove(path);
        times.time("ours", [&] { write_ours<DOCUMENT>(ours); });
        times.time("pugixml", [&] { write_theirs<DOCUMENT>(theirs); });
        times.time("write", [&] {
            std::FILE *const file = std::fopen(copy.c_str(), "wb");
            std::fwrite(bytes.data(), 1, bytes.size(), file);
            std::fclose(file);
        });
    }
    times.report(state);
    state.counters["to_pugixml"] = times.ratio("ours", "pugixml");
    state.counters["to_write"] = times.ratio("ours", "write");
    if ((DOCUMENT::same_texts && contents(theirs) != bytes + "\n") || contents(copy) != bytes)
        state.SkipWithError("the files differ");
    for (std::string const &path : {ours, theirs, copy})
        std::filesystem::remove(path);
}
BENCHMARK(XmlText<FRAMES<unsigned>>)->Unit(benchmark::kMillisecond)->Iterations(50);
BENCHMARK(XmlText<FRAMES<float>>)->Unit(benchmark::kMillisecond)->Iterations(50);
BENCHMARK(XmlText<LINES>)->Unit(benchmark::kMillisecond)->Iterations(50);

}  // namespace
