#include "apps/vx2/commands.h"

#include "mesh/prepare.h"
#include "platform/exchange/bone_table.h"
#include "platform/exchange/export.h"
#include "platform/exchange/export_animation.h"
#include "platform/exchange/scene_file.h"
#include "scene/check.h"
#include "scene/dump.h"
#include "scene/scene.h"

#include <cstdio>

using namespace VEX2_LOADER;

namespace {

int fail(KN::String const &error)
{
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
}

void warn(KN_STD::VECTOR<KN::String> const &warnings)
{
    for (KN::String const &line : warnings)
        std::fprintf(stderr, "warning: %s\n", line.c_str());
}

class STANDARD_OUTPUT final : public VEX2_DUMP_SINK {
public:
    bool write(std::string_view piece) override
    {
        return std::fwrite(piece.data(), 1, piece.size(), stdout) == piece.size();
    }
};

// A line of `info` for a list that has anything in it.
void count_line(char const *name, unsigned count)
{
    if (count != 0)
        std::printf("%-18s %u\n", name, count);
}

template <class LIST>
void mesh_line(char const *name, LIST const &meshes)
{
    std::uint64_t triangles = 0, vertices = 0;
    for (auto const *mesh : meshes) {
        if (mesh != nullptr) {
            triangles += mesh->triangle_count();
            vertices += mesh->vertices.count;
        }
    }
    if (meshes.count != 0)
        std::printf("%-18s %u (%llu triangles, %llu vertices)\n", name, meshes.count, (unsigned long long)triangles,
                    (unsigned long long)vertices);
}

template <class LIST>
void reference_lines(LIST const &references)
{
    for (VEX2_SCENE_REFERENCE const *reference : references)
        if (reference != nullptr)
            std::printf("%-18s %s\n", "refers to", KN::printable(KN::to_utf8(reference->path)).c_str());
}

}  // namespace

int show_info(KN::String const &file)
{
    VEX2 scene;
    KN::String error;
    if (!load_scene(file, scene, error))
        return fail(error);
    std::printf("%-18s %g, by %s\n", "version", double(scene.header.version),
                KN::printable(KN::to_utf8(scene.header.producer)).c_str());
    if (!scene.header.source_text.empty())
        std::printf("%-18s %s\n", "source", KN::printable(KN::to_utf8(scene.header.source_text)).c_str());
    std::printf("%-18s %g to %g s\n", "time", double(scene.info.start_time), double(scene.info.end_time));
    count_line("nodes", scene.hierarchy.nodes.count);
    mesh_line("static meshes", scene.static_meshes);
    mesh_line("animated meshes", scene.animated_meshes);
    mesh_line("morph meshes", scene.morph_meshes);
    mesh_line("weighted meshes", scene.weighted_meshes);
    count_line("materials", scene.materials.count);
    count_line("cameras", scene.cameras.count);
    count_line("lights", scene.lights.count);
    count_line("shapes", scene.shapes.count);
    count_line("helpers", scene.helpers.count);
    count_line("links", scene.links.count);
    count_line("name links", scene.name_links.count);
    for (unsigned id = 0; id < 10; ++id)
        count_line(("attachments " + std::to_string(id)).c_str(), scene.attachment_list(id)->count);
    reference_lines(scene.references_a);
    reference_lines(scene.references_b);
    return 0;
}

int dump(KN::String const &file, std::optional<float> time, bool prepare)
{
    VEX2 scene;
    KN::String error;
    if (!load_scene(file, scene, error))
        return fail(error);
    if (prepare) {
        scene.seek(0);
        prepare_scene(scene);
    }
    if (time)
        scene.seek(*time);
    STANDARD_OUTPUT output;
    if (!dump_scene(scene, output) || std::fflush(stdout) != 0)
        return fail(KN::printable(file) + ": the dump cannot be written; check where standard output goes");
    return 0;
}

int validate(KN::String const &file)
{
    VEX2 scene;
    KN::String error;
    if (!load_scene(file, scene, error))
        return fail(error);
    VEX2_FINDINGS const findings = check_scene(scene);
    for (KN::String const &line : findings.errors)
        std::printf("%s: error: %s\n", KN::printable(file).c_str(), line.c_str());
    for (KN::String const &line : findings.warnings)
        std::printf("%s: warning: %s\n", KN::printable(file).c_str(), line.c_str());
    if (findings.omitted != 0)
        std::printf("%s: and %u more\n", KN::printable(file).c_str(), findings.omitted);
    if (findings.errors.empty() && findings.warnings.empty())
        std::printf("%s: sound\n", KN::printable(file).c_str());
    return findings.errors.empty() ? 0 : 1;
}

int import(IMPORT_REQUEST const &request)
{
    IMPORT_REPORT report;
    KN::String error;
    if (!import_model(request, report, error))
        return fail(error);
    warn(report.warnings);
    for (KN::String const &path : report.scenes)
        std::printf("%s\n", KN::printable(path).c_str());
    for (KN::String const &path : report.textures)
        std::printf("%s\n", KN::printable(path).c_str());
    std::printf("%llu triangles\n", (unsigned long long)report.triangles);
    if (report.clips.size() > 1 && !request.all_clips && request.clip.empty()) {
        std::printf("animation '%s'; --clip takes another, --all-clips all of:\n", report.clips.front().c_str());
        for (KN::String const &clip : report.clips)
            std::printf("    %s\n", clip.c_str());
    }
    return 0;
}

int export_glb(KN::String const &file, KN::String const &skeleton, KN::String const &target)
{
    VEX2 scene;
    KN::String error;
    KN_STD::VECTOR<KN::String> warnings;
    bool const is_animation = file.lower().ends_with(".anim");
    if (!is_animation && !skeleton.empty())
        return fail("--skeleton is for animations (.anim); a scene has its own nodes");
    bool const written = is_animation
                             ? export_animation(file, skeleton, target, warnings, error)
                             : load_scene(file, scene, error) && export_scene(scene, file, target, warnings, error);
    warn(warnings);
    return written ? 0 : fail(error);
}

int upgrade(KN::String const &file, KN::String const &target, bool references)
{
    VEX2 scene;
    KN::String error;
    bool const written =
        load_scene(file, scene, error) &&
        (references ? write_scene_with_references(file, target, scene, error) : write_scene(target, scene, error));
    return written ? 0 : fail(error);
}

int clean(KN::String const &file, KN::String const &target)
{
    VEX2 scene;
    KN::String error;
    if (!load_scene(file, scene, error))
        return fail(error);
    scene.seek(0);
    prepare_scene(scene);
    return write_scene(target, scene, error) ? 0 : fail(error);
}

int make_bone_table(KN::String const &file, KN::String const &target)
{
    VEX2 scene;
    KN::String error;
    if (!load_scene(file, scene, error) || !write_bone_table(scene, file, target, error))
        return fail(error);
    return 0;
}
