#include "scene/reference.h"

#include "foundation/messages.h"
#include "scene/read_fields.h"
#include "scene/scene.h"
#include "scene/writer.h"

#include <algorithm>
#include <filesystem>

namespace VEX2_LOADER {

namespace {

constexpr std::size_t longest_path = 260;
constexpr unsigned deepest_reference = 16;
constexpr unsigned most_references = 65536;  // each holds a whole scene, an empty one too
constexpr unsigned most_referenced_loads = 1024;

KN::String shown(KN::UniString const &path) { return KN::printable(KN::disk_path(path)); }

bool same_file(KN::UniString const &a, KN::UniString const &b)
{
    std::error_code error;
    return std::filesystem::equivalent(std::string(KN::disk_path(a)), std::string(KN::disk_path(b)), error);
}

// Whether the load that `buffer` belongs to may go on into the file at `path`.
bool may_follow(VEX2_READ_BUFFER &buffer, KN::UniString const &path)
{
    unsigned depth = 1;
    KN::String chain = shown(path);
    for (VEX2_READ_BUFFER const *open = &buffer; open; open = open->outer, ++depth) {
        chain = KN::String(shown(open->path) + " -> " + chain);
        if (same_file(open->path, path))
            return buffer.fail("the references lead back to where they came from: " + chain);
    }
    if (depth > deepest_reference + 1)
        return buffer.fail("references lie deeper than " + std::to_string(deepest_reference) + " files: " + chain);
    if (++buffer.session().referenced_loads > most_referenced_loads)
        return buffer.fail("more than " + std::to_string(most_referenced_loads) + " referenced files to load");
    return true;
}

}  // namespace

KN::UniString resolve_reference_path(KN::UniString const &base, KN::UniString const &path)
{
    bool const absolute =
        !path.empty() && (path[0] == u'\\' || path[0] == u'/' || path.find(u':') != KN::UniString::npos);
    std::size_t const folder_end = base.rfind(u'\\');
    if (absolute || folder_end == KN::UniString::npos)
        return path;
    return KN::UniString(base.substr(0, folder_end + 1) + path);
}

KN::UniString reference_path_from(KN::UniString const &base, KN::UniString const &path)
{
    KN::UniString with_backslashes = base;
    std::replace(with_backslashes.begin(), with_backslashes.end(), u'/', u'\\');
    return resolve_reference_path(with_backslashes, path);
}

VEX2_SCENE_REFERENCE::VEX2_SCENE_REFERENCE(std::uint32_t chunk) : type(chunk) {}

VEX2_SCENE_REFERENCE::~VEX2_SCENE_REFERENCE() { delete scene; }

void VEX2_SCENE_REFERENCE::advance(float delta)
{
    if (scene)
        scene->advance(delta);
}

void VEX2_SCENE_REFERENCE::seek(float time)
{
    if (scene)
        scene->seek(time);
}

bool VEX2_SCENE_REFERENCE::read(VEX2_READ_BUFFER &buffer, float)
{
    delete std::exchange(scene, nullptr);
    if (!read_string(buffer, path) || !buffer.charge(sizeof(VEX2)))
        return false;
    if (++buffer.session().references > most_references)
        return buffer.fail("more than " + std::to_string(most_references) + " references");
    scene = new VEX2;
    KN::UniString const file = reference_path_from(buffer.path, path);
    if (!KN::exists(KN::String(KN::disk_path(file).substr(0, longest_path))))
        return true;
    if (!may_follow(buffer, file))
        return false;
    VEX2_READ_BUFFER inner(file, buffer);
    return scene->load(inner, true) || buffer.fail("a referenced file does not load: " + inner.session().first_fault);
}

bool VEX2_SCENE_REFERENCE::write(VEX2_CHUNK_WRITER &writer) const
{
    if (!writer.write_string(path))
        return false;
    if (!scene || !writer.write_references)
        return true;
    KN::UniString const target = reference_path_from(writer.path, path);
    if (std::size_t const folder_end = target.rfind(u'\\'); folder_end != KN::UniString::npos)
        KN::make_directories(KN::disk_path(KN::UniString(target.substr(0, folder_end))));
    VEX2_CHUNK_WRITER inner(target, false, true);
    bool good = scene->write(inner);
    good &= inner.close();
    if (!good)
        KN::message_txt(KN::String("cannot write the referenced scene " + shown(target)));
    return true;
}

}  // namespace VEX2_LOADER
