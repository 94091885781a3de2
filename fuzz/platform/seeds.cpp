// platform_seeds FOLDER: writes small files of every kind that fuzzers of this folder read, a folder a kind.
#include "Plugins/Vx2/host/engine.h"
#include "fuzz_kit.h"
#include "platform/asset_graph/agf_file.h"
#include "platform/build_host/project.h"
#include "platform/gltf/document.h"
#include "platform/gltf/writer.h"
#include "platform/texture/dds.h"
#include "platform/texture/tga.h"

#include <algorithm>
#include <memory>

using namespace FUZZ;

namespace {

std::filesystem::path folder;

void put(std::string const &name, std::string_view bytes)
{
    std::filesystem::path const path = folder / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string bytes_of(std::filesystem::path const &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// As png_fuzz takes them apart: 7 x 5 pixels of every form.
void put_png_parts()
{
    for (int const form : {0, 2, 3, 4, 6})
        for (int const depth : {1, 2, 4, 8, 16})
            for (int const interlaced : {0, 1}) {
                std::string parts = {0, 0, 0, 7, 0, 0, 0, 5, char(depth), char(form), 0, 0, char(interlaced), 12, 6};
                parts += "abcdefghijklmnopqr";
                for (char filter = 0; filter < 10; ++filter)
                    parts += char(filter % 5) + std::string(56, char('0' + filter));
                put("png/" + std::to_string(form) + "_" + std::to_string(depth) + "_" + std::to_string(interlaced),
                    parts);
            }
}

void put_pictures()
{
    KESTREL::PICTURE picture{6, 5, std::vector<std::uint8_t>(6 * 5 * 4)};
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        picture.pixels[i] = std::uint8_t(i * 7);
    KN::String error;
    write_tga(picture, (folder / "tga/colour").string(), error);
    write_dds(picture, KESTREL::CONTENT::COLOUR, (folder / "dds/colour").string(), error);
    write_dds(picture, KESTREL::CONTENT::NORMAL, (folder / "dds/normal").string(), error);
    for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
        picture.pixels[i] = 255;
    write_dds(picture, KESTREL::CONTENT::COLOUR, (folder / "dds/opaque").string(), error);

    std::string head(18, '\0');
    head[2] = 11;  // grey, packed
    head[12] = 6;
    head[14] = 2;
    head[16] = 8;
    put("tga/grey_packed", head + "\x85g" + "\x05" + "abcdef");
    head[2] = 10;
    head[16] = 24;
    head[17] = 0x20;  // from the top
    put("tga/packed", head + "\x8brgb");
}

void put_models(std::string const &root)
{
    GLTF::DOCUMENT document;
    GLTF::PRIMITIVE primitive;
    for (auto const &[name, components] :
         {std::pair{"POSITION", 3}, {"NORMAL", 3}, {"TANGENT", 4}, {"TEXCOORD_0", 2}}) {
        int const accessor =
            document.buffer.add(GLTF::COMPONENT::F32, components, 3, GLTF::USE::VERTICES, components == 3);
        for (int i = 0; i < 3; ++i)
            document.buffer.at<float>(accessor)[i * components + i % components] = 1;
        primitive.attributes.emplace_back(name, accessor);
    }
    int const colours = document.buffer.add(GLTF::COMPONENT::U8, 4, 3, GLTF::USE::VERTICES, false, true);
    std::fill_n(document.buffer.at<std::uint8_t>(colours), 12, std::uint8_t(200));
    primitive.attributes.emplace_back("COLOR_0", colours);
    primitive.indices = document.buffer.add(GLTF::COMPONENT::U16, 1, 3, GLTF::USE::INDICES);
    for (std::uint16_t i = 0; i < 3; ++i)
        document.buffer.at<std::uint16_t>(primitive.indices)[i] = i;
    primitive.material = 0;
    GLTF::MATERIAL material;
    material.diffuse.uri = "tex/leaf%5Fdiffuse.tga";
    material.normal.uri = "tex/leaf_normal.tga";
    material.alpha = GLTF::MATERIAL::CUT_OFF;
    document.materials = {material};
    document.meshes = {{"leaf", {primitive}, {}, {}}};
    document.nodes.resize(3);
    document.nodes[0].mesh = document.nodes[1].mesh = document.nodes[2].mesh = 0;
    document.nodes[0].coarser_levels = {1, 2};
    document.roots = {0};
    document.extras = {{"skeleton", std::string("man")}, {"place", std::string("trees")}};
    KN::String error;
    write_glb(document, KN::String(root + "/m"), error);

    std::string const file = bytes_of(root + "/m");
    std::size_t const json = std::uint8_t(file[12]) + 256u * std::uint8_t(file[13]);
    put("model/whole", file);
    put("model/parts", file.substr(20, json) + '\0' + file.substr(20 + json + 8));

    // What the service looks at is remembered.
    std::unique_ptr<KESTREL::ENGINE> const engine(KESTREL::make_engine(true, true, false));
    KESTREL::RIGID_HEADER_CACHE::enable_usage_save();
    engine->rigid_model_service()->open(KESTREL::RIGID_MODEL_SERVICE::HEADER_ONLY, KN::String(root + "/m"), nullptr,
                                        false);
    KESTREL::RIGID_HEADER_CACHE::save(KN::must_fix_string_widen((folder / "header_cache/one").string()));
}

void put_texts()
{
    put("bone_table/man", "root = \"Hips\"\npreferred = true\nbones = [\n    [\"hips\", \"\"],  # first\n"
                          "    ['leg', \"\\u0048ips\"],\n    [\"foot\", \"\"\"leg\"\"\"],\n]\n");
    QMap<QString, QTSHARED::ASSET_FRAGMENT> fragments;
    fragments["props/hut"].asset = "props/hut.rigid_model_v2";
    fragments["props/hut"].dependencies = {{"props/hut.meta", "all", ""}, {"tex/a&b\"", "all", "note"}};
    fragments["props/barn"].note = "two\nlines";
    QByteArray const agf = QTSHARED::agf_bytes(fragments);
    put("agf/two", {agf.constData(), std::size_t(agf.size())});
}

}  // namespace

int main(int count, char **arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: platform_seeds FOLDER\n");
        return 2;
    }
    folder = std::filesystem::absolute(arguments[1]);
    for (char const *kind : {"tga", "dds", "header_cache"})
        std::filesystem::create_directories(folder / kind);
    SCRATCH const scratch;
    std::string const root = scratch.folder.string();
    QString const place = QString::fromStdString(root);
    set_current_roots({place, place, place, place});
    put_png_parts();
    put_pictures();
    put_models(root);
    put_texts();
    return std::filesystem::file_size(folder / "header_cache/one") > 20 ? 0 : 1;
}
