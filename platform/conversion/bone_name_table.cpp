// A bone table is a TOML file, <raw>/animations/skeletons/NAME.bone_table:
//
//     root = "hips"        # one of the bones
//     preferred = false    # may be left out
//     bones = [
//         ["hips", ""],    # name, and the parent's name or nothing; parents first
//         ["leg", "hips"],
//     ]

#include "Plugins/Vx2/host/bone_name_table.h"

#include "Plugins/Vx2/host/paths.h"
#include "foundation/file.h"
#include "foundation/messages.h"
#include "platform/build_host/toml_node.h"

#include <algorithm>
#include <filesystem>

namespace TOOLDATABUILDER {

namespace {

constexpr std::string_view extension = ".bone_table";
constexpr std::size_t longest_name = 1024;  // bytes; an animation file has room for 65,535

KN::String bytes_of(QString const &text) { return text.toStdString(); }

// Skeletons that have any nodes: of a scene that names none, and of a camera.
bool is_built_in(KN::String const &skeleton) { return skeleton.lower() == "generic" || skeleton.lower() == "all"; }

// The path of the skeleton's file, whether that exists or not. Names have no case, file systems may.
KN::String file_of(KN::String const &skeleton)
{
    KN::String const folder = bytes_of(PATHS::raw_data() + "/animations/skeletons/");
    KN::String const wanted = skeleton + KN::String(extension);
    if (KN::exists(folder + wanted))
        return folder + wanted;
    KN::String found = wanted;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder.c_str(), error), end; !error && entry != end;
         entry.increment(error)) {
        KN::String const name = entry->path().filename().string();
        if (name.lower() == wanted.lower() && (found == wanted || name < found))
            found = name;
    }
    return folder + found;
}

class READER {
public:
    READER(KN::String const &table_file, BONE_NAME_TABLE &to) : shown(KN::printable(table_file)), table(to) {}

    // True if the text is a sound table. `fault` has the reason otherwise.
    bool read(QByteArray const &text, KN::String &root)
    {
        TOML_NODE file;
        QString toml_fault;
        if (!read_toml(text, QString::fromStdString(shown), file, toml_fault)) {
            fault = bytes_of(toml_fault);
            return false;
        }
        for (TOML_NODE const &item : file.items) {
            bool const known = item.key == QLatin1String("root")        ? read_text(item, root)
                               : item.key == QLatin1String("preferred") ? read_flag(item)
                               : item.key == QLatin1String("bones")
                                   ? read_bones(item)
                                   : fail(item, "there is no '" + bytes_of(item.key) + "' in a bone table");
            if (!known)
                return false;
        }
        if (table.bones.empty())
            return fail(file, "the table has no bones");
        return numbers.count(root.lower()) != 0 || fail(file, "the root '" + root + "' is none of the bones");
    }

    KN::String fault;

private:
    bool fail(TOML_NODE const &at, KN::String const &what)
    {
        fault = shown + ":" + std::to_string(at.line) + ": " + KN::printable(what);
        return false;
    }

    bool read_text(TOML_NODE const &node, KN::String &text)
    {
        if (!node.is_text())
            return fail(node, "here a name is wanted, in quotes");
        text = bytes_of(node.value.toString());
        return text.size() <= longest_name ||
               fail(node, "a name has more than " + std::to_string(longest_name) + " bytes");
    }

    bool read_flag(TOML_NODE const &node)
    {
        if (!node.is_flag())
            return fail(node, "preferred is true or false");
        table.preferred = node.value.toBool();
        return true;
    }

    bool read_bones(TOML_NODE const &node)
    {
        if (node.kind != TOML_NODE::ARRAY)
            return fail(node, "bones is a list of pairs, [\"name\", \"parent's name\"]");
        for (TOML_NODE const &pair : node.items) {
            KN::String name, parent;
            if (pair.kind != TOML_NODE::ARRAY || pair.items.size() != 2)
                return fail(pair, "a bone is a pair, [\"name\", \"parent's name\"]");
            if (!read_text(pair.items[0], name) || !read_text(pair.items[1], parent))
                return false;
            if (name.empty())
                return fail(pair, "a bone has no name");
            BONE_NAME_TABLE::BONE bone;
            bone.name = name.lower();
            if (!parent.empty()) {
                auto const above = numbers.find(parent.lower());
                if (above == numbers.end())
                    return fail(pair, "the parent '" + parent + "' of '" + name + "' is no bone that stands before it");
                bone.parent = above->second;
            }
            if (!numbers.emplace(bone.name, std::int32_t(table.bones.size())).second)
                return fail(pair, "two bones are called '" + name + "'");
            table.bones.push_back(std::move(bone));
        }
        return true;
    }

    KN::String const shown;
    BONE_NAME_TABLE &table;
    KN_STD::MAP<KN::String, std::int32_t> numbers;  // of the bones
};

// The bytes of a file that is there and not larger than people write.
bool read_file(KN::String const &path, QByteArray &bytes, KN::String &fault)
{
    KN::FileIn file;
    if (!file.open(path, true)) {
        fault = KN::printable(path) + ": the skeleton has no table here; 'vx2 bones' makes one from a scene";
        return false;
    }
    bytes.resize(int(std::min(file.size(), unsigned(largest_toml) + 1)));  // one more is refused by the reader
    if (file.read(bytes.data(), unsigned(bytes.size())) == unsigned(bytes.size()))
        return true;
    fault = KN::printable(path) + ": the file cannot be read";
    return false;
}

}  // namespace

BONE_NAME_TABLE::BONE_NAME_TABLE(KN::String const &skeleton) : name(skeleton)
{
    using namespace std::string_view_literals;
    KN::String fault;
    if (skeleton.empty() || skeleton.find_first_of("/\\\0"sv) != KN::String::npos) {
        fault = "no skeleton can be called '" + KN::printable(skeleton) + "'";
    } else {
        KN::String const path = file_of(skeleton);
        if (is_built_in(skeleton) && !KN::exists(path)) {
            valid = any_nodes = true;
            root = "root";
            return;
        }
        QByteArray text;
        READER reader(path, *this);
        valid = read_file(path, text, fault) && reader.read(text, root);
        if (!valid && fault.empty())
            fault = reader.fault;
    }
    if (valid)
        return;
    KN::message(KN::MESSAGE_WARNING, fault);
    preferred = 0;
    bones.clear();
    root.clear();
}

}  // namespace TOOLDATABUILDER
