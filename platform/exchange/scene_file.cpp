#include "platform/exchange/scene_file.h"

#include "foundation/containers.h"
#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "scene/buffer.h"
#include "scene/scene.h"
#include "scene/writer.h"

#include <filesystem>

using namespace VEX2_LOADER;

namespace {

// The scenes of the references, out of the way of a write: a reference without a scene writes no file.
class REFERENCES_ASIDE {
public:
    explicit REFERENCES_ASIDE(VEX2 &scene)
    {
        for (auto *list : {&scene.references_a, &scene.references_b})
            for (VEX2_SCENE_REFERENCE *reference : *list)
                if (reference != nullptr)
                    aside.push_back({reference, std::exchange(reference->scene, nullptr)});
    }
    ~REFERENCES_ASIDE()
    {
        for (auto const &[reference, scene] : aside)
            reference->scene = scene;
    }
    REFERENCES_ASIDE(REFERENCES_ASIDE const &) = delete;
    REFERENCES_ASIDE &operator=(REFERENCES_ASIDE const &) = delete;

private:
    KN_STD::VECTOR<std::pair<VEX2_SCENE_REFERENCE *, VEX2 *>> aside;
};

// Why the file at `path` gave no bytes.
KN::String cause_of_empty(KN::String const &path)
{
    std::error_code error;
    std::filesystem::path const place(KN::disk_path(path));
    std::filesystem::file_status const status = std::filesystem::status(place, error);
    if (!std::filesystem::exists(status))
        return "there is no such file; check the path";
    if (std::filesystem::is_directory(status))
        return "this is a folder; name a scene file";
    if (!std::filesystem::is_regular_file(status))
        return "this is no file on a disk; name a scene file";
    std::uintmax_t const size = std::filesystem::file_size(place, error);
    if (!error && size == 0)
        return "the file is empty; export it again";
    if (!error && size > 0xffffffff)
        return "the file is larger than 4 GiB; split the scene";
    return "the file cannot be read; check its permissions";
}

bool is_utf8(KN::String const &bytes) { return KN::to_utf8(KN::from_utf8(bytes)) == bytes; }

}  // namespace

KN::UniString scene_path(KN::String const &path)
{
    return is_utf8(path) ? KN::from_utf8(path) : KN::must_fix_string_widen(path);
}

bool load_scene(KN::String const &path, VEX2 &scene, KN::String &error)
{
    VEX2_READ_BUFFER buffer(scene_path(path));
    if (!(buffer.cursor < buffer.end)) {
        error = KN::printable(path) + ": " + cause_of_empty(path);
        return false;
    }
    if (scene.load(buffer, true))
        return true;
    error = buffer.fault.empty() ? KN::printable(path) + ": the file does not load; export it again" : buffer.fault;
    return false;
}

bool write_scene(KN::String const &path, VEX2 &scene, KN::String &error)
{
    REFERENCES_ASIDE const aside(scene);
    KN::FinishedFile file(path);
    KN::UniString const unfinished = scene_path(file.unfinished_path());
    constexpr unsigned longest_path = 260;  // the writer cuts what is longer
    if (!file.error().empty()) {
        error = file.error() + "; check the folder";
        return false;
    }
    if (unfinished.length() > longest_path) {
        error = KN::printable(path) + ": the path is too long for a scene file; write to a shorter one";
        return false;
    }
    VEX2_CHUNK_WRITER writer(unfinished, false, true);
    bool written = scene.write(writer);
    written &= writer.close();
    if (!written) {
        error = KN::printable(path) + ": the scene cannot be written; check the disk's free space, and that no text "
                                      "of the scene is longer than 65,535 units";
        return false;
    }
    if (!file.commit()) {
        error = file.error() + "; check the folder";
        return false;
    }
    return true;
}

bool write_scene_with_references(KN::String const &source, KN::String const &path, VEX2 &scene, KN::String &error)
{
    for (auto *list : {&scene.references_a, &scene.references_b}) {
        for (VEX2_SCENE_REFERENCE *reference : *list) {
            if (reference == nullptr || reference->scene == nullptr)
                continue;
            KN::String const from = KN::to_utf8(reference_path_from(scene_path(source), reference->path));
            KN::String const to = KN::to_utf8(reference_path_from(scene_path(path), reference->path));
            if (!KN::exists(from))
                continue;
            std::string const folder = std::filesystem::path(KN::disk_path(to)).parent_path().string();
            if (!folder.empty() && !KN::make_directories(folder)) {
                error = KN::printable(folder) + ": the folder cannot be created; check the permissions";
                return false;
            }
            if (!write_scene_with_references(from, to, *reference->scene, error))
                return false;
        }
    }
    return write_scene(path, scene, error);
}
