// A mesh loses its degenerate triangles and its unused vertices first; then every vertex gets the sum of the frames of
// the triangles that touch it, in the order of the triangles. One walk over the triangles adds each frame to its three
// corners, which gives every vertex that order without a list of its triangles.

#include "mesh/tangent_frames.h"

#include "foundation/fp_state.h"
#include "mesh/sampled_frames.h"
#include "mesh/triangle_frame.h"
#include "mesh/trim_mesh.h"
#include "scene/scene.h"

#include <algorithm>

namespace VEX2_LOADER {

namespace {

bool has_shader_material(VEX2 const &scene, VEX2_MESH const &mesh)
{
    for (VEX2_POLYGON_SET const &section : mesh.sections) {
        if (section.material_index < 0 || std::uint32_t(section.material_index) >= scene.materials.count)
            continue;
        VEX2_MATERIAL const *material = scene.materials[std::uint32_t(section.material_index)];
        if (material != nullptr && material->subtype() == VEX2_SHADER_MATERIAL::kind)
            return true;
    }
    return false;
}

void normalise(VEX2_VECTOR &vector)
{
    float const squared = vector.x * vector.x + vector.y * vector.y + vector.z * vector.z;
    if (squared > 0.01f) {
        float const factor = 1.0f / std::sqrt(squared);
        vector.x *= factor;
        vector.y *= factor;
        vector.z *= factor;
    }
}

void add(VEX2_VECTOR &sum, VEX2_VECTOR const &part)
{
    sum.x += part.x;
    sum.y += part.y;
    sum.z += part.z;
}

// Gives every vertex `sets` frames of zero, all of the mesh in one block.
template <class MESH>
VEX2_TANGENT_FRAME *reset_frames(MESH &mesh, std::uint32_t sets)
{
    std::size_t const count = std::size_t(mesh.vertices.count) * sets;
    VEX2_TANGENT_FRAME *const frames = mesh.blocks.template allocate<VEX2_TANGENT_FRAME>(count);
    std::fill(frames, frames + count, VEX2_TANGENT_FRAME{});
    for (std::uint32_t i = 0; i < mesh.vertices.count; ++i)
        mesh.vertices[i].frames.borrow(frames + std::size_t(i) * sets, sets);
    return frames;
}

template <class MESH>
void build_frames(MESH &mesh, KN::DynamicArray<VEX2_VECTOR> const &positions, KN::DynamicArray<POLYGON_SETS *> const &,
                  std::uint32_t sets, SAMPLE_BUDGET &)
{
    VEX2_TANGENT_FRAME *const frames = reset_frames(mesh, sets);
    KN::DynamicArray<FRAME_CORNER> corners;
    corners.resize(positions.count);
    for (std::uint32_t set = 0; set < sets; ++set) {
        for (std::uint32_t i = 0; i < positions.count; ++i) {
            KN::DynamicArray<VEX2_VECTOR> const &uvws = mesh.vertices[i].uvws;
            VEX2_VECTOR const uvw = set < uvws.count ? uvws[set] : VEX2_VECTOR{};
            corners[i] = {positions[i], uvw.x, uvw.y};
        }
        for (VEX2_POLYGON_SET const &section : mesh.sections)
            for (VEX2_TRIANGLE const &triangle : section.triangles) {
                auto const [a, b, c] = triangle.vertices;
                VEX2_TANGENT_FRAME const frame = triangle_frame_of(corners[a], corners[b], corners[c]).narrow();
                for (std::uint32_t const corner : triangle.vertices) {
                    VEX2_TANGENT_FRAME &sum = frames[std::size_t(corner) * sets + set];
                    add(sum.binormal, frame.binormal);
                    add(sum.tangent, frame.tangent);
                }
            }
    }
    for (std::size_t i = 0; i < std::size_t(positions.count) * sets; ++i) {
        normalise(frames[i].binormal);
        normalise(frames[i].tangent);
    }
}

void build_frames(VEX2_ANIMATED_MESH &mesh, KN::DynamicArray<VEX2_VECTOR> const &,
                  KN::DynamicArray<POLYGON_SETS *> const &users, std::uint32_t sets, SAMPLE_BUDGET &budget)
{
    if (!unshare_vertices(mesh, users))
        return;
    for (VEX2_ANIMATED_VERTEX &vertex : mesh.vertices) {
        vertex.frames.clear();
        vertex.frames.resize(sets);
    }
    build_sampled_frames(mesh, sets, budget);
}

// Mesh number `mesh_index` of its kind; `attachments` is that kind's list.
template <class MESH>
void generate_for_mesh(VEX2 const &scene, MESH &mesh, std::uint32_t mesh_index, VEX2_LIST<VEX2_ATTACHMENT> &attachments,
                       FRAME_OPTIONS const &options, SAMPLE_BUDGET &budget)
{
    if (options.shader_materials_only && !has_shader_material(scene, mesh))
        return;
    if (mesh.vertices.empty() || mesh.triangle_count() == 0)
        return;

    KN::DynamicArray<VEX2_VECTOR> positions;
    positions.resize(mesh.vertices.count);
    for (std::uint32_t i = 0; i < positions.count; ++i)
        mesh.vertices[i].get_position(positions[i]);

    POLYGON_SETS &sections = mesh.sections;
    if (options.keep_degenerate_sections && !sections[0].triangles.empty() &&
        is_degenerate(sections[0].triangles[0], positions))
        return;
    remove_degenerate_triangles(sections, positions, options.keep_degenerate_sections);

    KN::DynamicArray<POLYGON_SETS *> const users = triangles_of(mesh, mesh_index, attachments);
    std::uint32_t used_count = 0;
    KN::DynamicArray<std::uint32_t> const remap = number_used_vertices(users, mesh.vertices.count, used_count);
    if (used_count < mesh.vertices.count) {
        keep_numbered(mesh.vertices, remap, used_count);
        keep_numbered(positions, remap, used_count);
        for (POLYGON_SETS *of_user : users)
            renumber(*of_user, remap);
    }
    if (mesh.vertices.empty())
        return;

    build_frames(mesh, positions, users, std::min(options.max_uvw_sets, mesh.vertices[0].uvw_count()), budget);
}

template <class MESH>
void generate_for_list(VEX2 const &scene, VEX2_LIST<MESH> &meshes, VEX2_LIST<VEX2_ATTACHMENT> &attachments,
                       FRAME_OPTIONS const &options, SAMPLE_BUDGET &budget)
{
    for (std::uint32_t i = 0; i < meshes.count; ++i)
        if (meshes[i] != nullptr)
            generate_for_mesh(scene, *meshes[i], i, attachments, options, budget);
}

void generate_for_scene(VEX2 &scene, FRAME_OPTIONS const &options, SAMPLE_BUDGET &budget)
{
    generate_for_list(scene, scene.static_meshes, scene.attachments_5, options, budget);
    generate_for_list(scene, scene.weighted_meshes, scene.attachments_6, options, budget);
    generate_for_list(scene, scene.morph_meshes, scene.attachments_4, options, budget);
    generate_for_list(scene, scene.animated_meshes, scene.attachments_0, options, budget);
    scene.refresh_weighted_frames();
    for (VEX2_LIST<VEX2_SCENE_REFERENCE> *references : {&scene.references_a, &scene.references_b})
        for (VEX2_SCENE_REFERENCE *reference : *references)
            if (reference != nullptr && reference->scene != nullptr)
                generate_for_scene(*reference->scene, options, budget);
}

}  // namespace

void generate_frames(VEX2 &scene, FRAME_OPTIONS const &options)
{
    KN::FpStateScope const fixed;
    SAMPLE_BUDGET budget;
    generate_for_scene(scene, options, budget);
}

}  // namespace VEX2_LOADER
