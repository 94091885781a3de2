// The parent's side of an import: starts the worker, reads what it left behind with distrust, puts it in place.

#include "platform/exchange/import.h"

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "platform/exchange/import_materials.h"
#include "platform/exchange/picture.h"
#include "platform/exchange/scene_file.h"
#include "scene/check.h"
#include "scene/scene.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>

using namespace VEX2_LOADER;

namespace {

// A folder of our own for the worker, gone afterwards.
class SCRATCH_FOLDER {
public:
    SCRATCH_FOLDER()
    {
        std::error_code error;
        std::filesystem::path const base = std::filesystem::temp_directory_path(error);
        std::string name = (base / "vx2-import-XXXXXX").string();
        if (!error && ::mkdtemp(name.data()) != nullptr)
            folder = name;
    }
    ~SCRATCH_FOLDER()
    {
        std::error_code error;
        if (!folder.empty())
            std::filesystem::remove_all(folder.c_str(), error);
    }
    SCRATCH_FOLDER(SCRATCH_FOLDER const &) = delete;
    SCRATCH_FOLDER &operator=(SCRATCH_FOLDER const &) = delete;

    KN::String folder;  // empty: it could not be made
};

struct WORKER_SCENE {
    KN::String file, clip;
    std::unique_ptr<VEX2> scene;
};

struct WORKER_RESULT {
    KN_STD::VECTOR<WORKER_SCENE> scenes;
    KN_STD::VECTOR<KN::String> textures;
    KN::String error;
    bool done = false;
};

// A name that stays within the folder it is looked for in.
bool is_plain_name(std::string_view name)
{
    return !name.empty() && name[0] != '.' &&
           name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.") ==
               std::string_view::npos;
}

void read_lines(KN::String const &output, WORKER_RESULT &result, IMPORT_REPORT &report)
{
    for (std::size_t at = 0; at < output.size();) {
        std::size_t const end = std::min(output.find('\n', at), output.size());
        KN::String const line = output.substr(at, end - at);
        at = end + 1;
        std::size_t const tab = std::min(line.find('\t'), line.size());
        KN::String const word = line.substr(0, tab);
        KN::String const text = KN::printable(line.substr(std::min(tab + 1, line.size())));
        if (word == "warning") {
            report.warnings.push_back(text);
        } else if (word == "clip") {
            report.clips.push_back(text);
        } else if (word == "texture") {
            result.textures.push_back(text);
        } else if (word == "scene") {
            std::size_t const blank = std::min(text.find(' '), text.size());
            result.scenes.push_back(
                {text.substr(0, blank), text.substr(std::min(blank + 1, text.size())), std::make_unique<VEX2>()});
        } else if (word == "error") {
            result.error = text;
        } else if (word == "done") {
            result.done = true;
        }
    }
}

KN::String cause_of(PROCESS_RESULT const &ended, PROCESS_LIMITS const &limits)
{
    switch (ended.ending) {
    case PROCESS_RESULT::OUT_OF_TIME:
        return "the import took longer than " + std::to_string(limits.seconds) +
               " seconds or printed without end; simplify the model or raise the time limit";
    case PROCESS_RESULT::NOT_STARTED:
        return "the import's own process cannot be started: error " + std::to_string(ended.code);
    default:
        return "the importer broke down over this file, or needed more than " + std::to_string(limits.memory >> 20) +
               " MiB; export the model again or raise the memory limit";
    }
}

bool read_texture(KN::String const &path, KN::String &bytes)
{
    KN::FileIn file;
    if (!file.open(path, false))
        return false;
    bytes.resize(file.size());
    return file.read(bytes.data(), file.size()) == bytes.size() && is_plain_tga(bytes);
}

std::uint64_t triangles_of(VEX2 const &scene)
{
    std::uint64_t sum = 0;
    auto const add = [&](auto const &meshes) {
        for (auto const *mesh : meshes)
            sum += mesh != nullptr ? mesh->triangle_count() : 0;
    };
    add(scene.static_meshes);
    add(scene.weighted_meshes);
    add(scene.morph_meshes);
    return sum;
}

// OUT.vx2 as its folder with the slash, and OUT.
void split(KN::String const &target, KN::String &folder, KN::String &stem)
{
    std::size_t const slash = target.find_last_of('/');
    folder = slash == std::string::npos ? KN::String() : KN::String(target.substr(0, slash + 1));
    stem = target.substr(folder.size());
    if (std::size_t const dot = stem.rfind('.'); dot != std::string::npos && dot != 0)
        stem.erase(dot);
}

}  // namespace

bool import_model(IMPORT_REQUEST const &request, IMPORT_REPORT &report, KN::String &error)
{
    auto const fail = [&](KN::String const &what) {
        error = KN::printable(request.model) + ": " + what;
        return false;
    };
    if (KN::FileIn probe; !probe.open(request.model, false))
        return fail("there is no such file, or it cannot be read; check the path");
    SCRATCH_FOLDER const scratch;
    if (scratch.folder.empty())
        return fail("no temporary folder can be made; check TMPDIR");

    KN::String folder, stem;
    split(request.target, folder, stem);
    KN_STD::VECTOR<KN::String> command = {request.worker, import_worker_word, KN::disk_path(request.model),
                                          scratch.folder, file_name_part(stem)};
    if (request.all_clips)
        command.push_back("all");
    else if (request.clip.empty())
        command.push_back("first");
    else
        command.insert(command.end(), {"clip", request.clip});
    PROCESS_RESULT const ended = run_limited(command, request.limits);

    WORKER_RESULT result;
    read_lines(ended.output, result, report);
    if (ended.ending == PROCESS_RESULT::ENDED && !result.error.empty())
        return fail(result.error);
    if (ended.ending != PROCESS_RESULT::ENDED || ended.code != 0 || !result.done || result.scenes.empty())
        return fail(cause_of(ended, request.limits));

    // Everything is read and judged before anything is written.
    KN_STD::VECTOR<KN::String> texture_bytes(result.textures.size());
    for (std::size_t i = 0; i < result.textures.size(); ++i)
        if (!is_plain_name(result.textures[i]) ||
            !read_texture(scratch.folder + "/" + result.textures[i], texture_bytes[i]))
            return fail("the importer made a faulty texture; export the model again");
    for (WORKER_SCENE &made : result.scenes) {
        KN::String fault;
        if (!is_plain_name(made.file) || !load_scene(scratch.folder + "/" + made.file, *made.scene, fault))
            return fail("the importer made a scene that does not load: " + fault);
        if (VEX2_FINDINGS const findings = check_scene(*made.scene); !findings.errors.empty())
            return fail("the importer made a faulty scene: " + findings.errors.front());
    }

    if (!folder.empty() && !KN::make_directories(folder)) {
        error = KN::printable(request.target) + ": its folder cannot be made; check the path and the permissions";
        return false;
    }
    for (std::size_t i = 0; i < result.textures.size(); ++i) {
        report.textures.push_back(folder + result.textures[i]);
        if (!KN::write_finished_file(report.textures.back(), texture_bytes[i], error)) {
            error += "; check the folder";
            return false;
        }
    }
    std::set<KN::String> names;
    for (WORKER_SCENE &made : result.scenes) {
        KN::String path = request.target;
        if (request.all_clips && !made.clip.empty()) {
            KN::String const base = folder + stem + "_" + file_name_part(made.clip);
            path = base + ".vx2";
            for (unsigned n = 2; !names.insert(path).second; ++n)
                path = base + "-" + std::to_string(n) + ".vx2";
        }
        if (!write_scene(path, *made.scene, error))
            return false;
        report.scenes.push_back(path);
    }
    report.triangles = triangles_of(*result.scenes.front().scene);
    return true;
}
