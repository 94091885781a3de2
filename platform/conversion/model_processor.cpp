// A model is put together in memory while the scene is there: a GLTF::DOCUMENT that lacks its textures. Writing
// publishes these and puts out the files.

#include "Plugins/Vx2/host/model_processor.h"

#include "Plugins/Vx2/host/paths.h"
#include "Plugins/Vx2/host/uvw_test.h"
#include "Plugins/Vx2/host/vex2_filter.h"
#include "foundation/file.h"
#include "foundation/messages.h"
#include "mesh/prepare.h"
#include "platform/building/description_file.h"
#include "platform/conversion/level_statistics.h"
#include "platform/conversion/lighting_materials.h"
#include "platform/conversion/mesh_source.h"
#include "platform/conversion/model_levels.h"
#include "platform/conversion/model_materials.h"
#include "platform/conversion/model_mesh.h"
#include "platform/conversion/model_skeleton.h"
#include "platform/conversion/terrain_tile.h"
#include "platform/conversion/texture_files.h"
#include "platform/gltf/writer.h"
#include "scene/buffer.h"

#include <algorithm>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

// What a model is made of when no filter tells.
class NOT_TECH_FILTER : public VEX2_FILTER {
public:
    bool mesh(VEX2_OBJECT const &mesh) const override
    {
        KN::UniString const *const type = mesh.attributes.class_type();
        return type == nullptr || *type != u"TECH";
    }
};

constexpr char interrupted[] = "interrupted";

bool fail(KN::String const &line)
{
    KN::message(KN::MESSAGE_ERROR, line);
    return false;
}

KN::String folder_of(KN::String const &path) { return path.substr(0, std::min(path.rfind('/'), path.size())); }

// Positions and triangles of a mesh that is in the document already.
GLTF::GEOMETRY geometry_of(GLTF::DOCUMENT &document, MODEL_MESH const &mesh)
{
    GLTF::MESH const &from = document.meshes[std::size_t(mesh.mesh)];
    float const *const positions = document.buffer.at<float>(from.primitives[0].attributes[0].second);
    GLTF::GEOMETRY geometry;
    geometry.name = from.name;
    geometry.positions.assign(positions, positions + mesh.vertex_count * 3);
    for (auto const &indices : mesh.indices)
        geometry.indices.insert(geometry.indices.end(), indices.begin(), indices.end());
    return geometry;
}

}  // namespace

struct MODEL_PROCESSOR::STATE {
    KN::String texture_folder;
    KN::String skeleton_name;
    bool single_lod;
    KN::String lighting_file;
    KN_STD::VECTOR<float> distances;
    KN_STD::VECTOR<unsigned char> qualities;

    // The model in the making.
    KN::String source;
    KN::String working_root, textures;  // physical, of this source
    GLTF::DOCUMENT document;
    std::vector<MODEL_MATERIAL> materials;
    std::vector<std::vector<MODEL_MESH>> levels;  // the finest first
    MODEL_SKELETON skeleton;

    bool begin(KN::String const &scene_file, KN::String &error);
    std::vector<int> take_materials(VEX2 const &scene, std::vector<MESH_SOURCE> const &meshes,
                                    MATERIAL_OPTIONS const &options);
    bool take_levels(std::vector<MESH_SOURCE> const &meshes, MODEL_MESH_OPTIONS const &options, KN::String &error);
    void make_coarser_levels();
    void place_levels();
    bool add_textures(KN::String const &model_folder, bool is_tree);
    void add_place(KN::String const &model_folder);
    std::vector<GLTF::GEOMETRY> finest_geometry();
};

bool MODEL_PROCESSOR::STATE::begin(KN::String const &scene_file, KN::String &error)
{
    source = scene_file;
    document = {};
    materials.clear();
    levels.clear();
    skeleton = {};

    PHYSICAL_PATH const physical(QString::fromUtf8(source.c_str()));
    working_root = tidy_folder(PATHS::target_working_data(physical).toStdString());
    textures = tidy_folder(working_root + "/" + texture_folder);
    if ((textures + "/").starts_with(working_root + "/"))
        return true;
    error = "the texture folder '" + texture_folder + "' lies outside the tree";
    return false;
}

// Gives, for each material of the scene, its number in the model; -1 where no mesh uses it.
std::vector<int> MODEL_PROCESSOR::STATE::take_materials(VEX2 const &scene, std::vector<MESH_SOURCE> const &meshes,
                                                        MATERIAL_OPTIONS const &options)
{
    std::vector<int> numbers(scene.materials.count, -1);
    for (MESH_SOURCE const &mesh : meshes)
        for (VEX2_POLYGON_SET const &section : mesh.mesh.sections)
            if (!section.triangles.empty() && section.material_index >= 0 &&
                std::size_t(section.material_index) < numbers.size())
                numbers[std::size_t(section.material_index)] = 0;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (numbers[i] < 0 || scene.materials[i] == nullptr) {
            numbers[i] = -1;
            continue;
        }
        numbers[i] = int(materials.size());
        materials.push_back(take_material(*scene.materials[i], options));
    }
    return numbers;
}

bool MODEL_PROCESSOR::STATE::take_levels(std::vector<MESH_SOURCE> const &meshes, MODEL_MESH_OPTIONS const &options,
                                         KN::String &error)
{
    MODEL_LEVELS sorted;
    if (!sort_into_levels(meshes, single_lod, sorted, error))
        return false;
    for (auto const &indices : sorted.meshes_of) {
        std::vector<MODEL_MESH> level;
        for (std::size_t const i : indices) {
            MODEL_MESH mesh;
            if (!KN::goes_on()) {
                error = interrupted;
                return false;
            }
            if (!add_model_mesh(meshes[i], skeleton, options, document, mesh, error))
                return false;
            if (mesh.mesh >= 0)
                level.push_back(std::move(mesh));
        }
        if (!level.empty())
            levels.push_back(std::move(level));
    }
    if (levels.empty()) {
        error = "there is no mesh with triangles to make a model of";
        return false;
    }
    if (!sorted.are_named && !single_lod)
        make_coarser_levels();
    if (KN::goes_on())
        return true;
    error = interrupted;
    return false;
}

// Each level from the one before; qualities end where they do not fall any more.
void MODEL_PROCESSOR::STATE::make_coarser_levels()
{
    unsigned before = 100;
    for (unsigned const quality : qualities) {
        if (quality == 0 || quality >= before)
            break;
        before = quality;
        std::vector<MODEL_MESH> level;
        std::size_t finer_triangles = 0, triangles = 0;
        for (std::size_t i = 0; i < levels.back().size(); ++i) {
            MODEL_MESH const &finer = levels.back()[i];
            finer_triangles += finer.triangles;
            MODEL_MESH coarser;
            if (!KN::goes_on() || !add_coarser_mesh(finer, quality, document, coarser))
                return;
            triangles += coarser.triangles;
            if (coarser.mesh >= 0)
                level.push_back(std::move(coarser));
        }
        if (level.empty() || triangles == finer_triangles)
            break;
        levels.push_back(std::move(level));
    }
}

// A node a level with a node a mesh below it. The first one stands in the scene, the others in its place far away.
void MODEL_PROCESSOR::STATE::place_levels()
{
    std::vector<GLTF::NODE> &nodes = document.nodes;
    std::size_t const first = nodes.size();
    nodes.resize(first + levels.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        nodes[first + i].name = "lod" + std::to_string(i);
        for (MODEL_MESH const &mesh : levels[i]) {
            GLTF::NODE node;
            node.name = document.meshes[std::size_t(mesh.mesh)].name;
            node.mesh = mesh.mesh;
            node.skin = mesh.is_skinned ? 0 : -1;
            nodes[first + i].children.push_back(int(nodes.size()));
            nodes.push_back(std::move(node));
        }
        if (i > 0)
            nodes[first].coarser_levels.push_back(int(first + i));
    }
    document.roots.push_back(int(first));
}

// False if it was interrupted.
bool MODEL_PROCESSOR::STATE::add_textures(KN::String const &model_folder, bool is_tree)
{
    TEXTURE_FILES files(folder_of(source), PATHS::raw_data().toStdString(),
                        texture_folder.empty() ? model_folder : textures);
    for (MODEL_MATERIAL const &material : materials) {
        if (!KN::goes_on())
            return false;
        document.materials.push_back(with_textures(material, files, model_folder));
        if (is_tree)
            files.publish_seasons(material.diffuse);
    }
    return true;
}

// So that the textures are found while the model stands elsewhere.
void MODEL_PROCESSOR::STATE::add_place(KN::String const &model_folder)
{
    if (model_folder == working_root)
        document.extras.emplace_back("place", ".");
    else if (model_folder.starts_with(working_root + "/"))
        document.extras.emplace_back("place", model_folder.substr(working_root.size() + 1));
}

std::vector<GLTF::GEOMETRY> MODEL_PROCESSOR::STATE::finest_geometry()
{
    std::vector<GLTF::GEOMETRY> meshes;
    for (MODEL_MESH const &mesh : levels[0])
        meshes.push_back(geometry_of(document, mesh));
    return meshes;
}

MODEL_PROCESSOR::MODEL_PROCESSOR(KN::String const &texture_folder, bool has_animation_type,
                                 KN::String const &animation_type, bool single_lod,
                                 KN::String const &lighting_materials, KN_STD::VECTOR<float> const &distances,
                                 KN_STD::VECTOR<unsigned char> const &qualities)
    : state(std::make_unique<STATE>())
{
    state->texture_folder = texture_folder;
    state->skeleton_name = has_animation_type ? animation_type : KN::String();
    state->single_lod = single_lod;
    state->lighting_file = lighting_materials;
    state->distances = distances;
    state->qualities = qualities;
}

MODEL_PROCESSOR::~MODEL_PROCESSOR() = default;

KN::String MODEL_PROCESSOR::get_lighting_materials_xml() { return "lighting/rigid_materials.xml"; }

bool MODEL_PROCESSOR::open_vex2(KN::String const &source, MODEL_STATISTICS_INTERFACE *statistics, bool debug)
{
    VEX2_READ_BUFFER buffer(KN::must_fix_string_widen(source));
    if (buffer.cursor >= buffer.end)
        return fail("Failed to open '" + source + "' for reading!");
    VEX2 scene;
    if (!scene.load(buffer, true))
        return fail("Failed to load vex2 file '" + source + "'!");
    scene.seek(0.0f);
    KN::UniString fault;
    test_vex2_uvws(scene, fault);
    if (!fault.empty())
        return fail(KN::to_utf8(fault));
    prepare_scene(scene);
    return load_from_vex2(scene, NOT_TECH_FILTER(), statistics, source, debug);
}

bool MODEL_PROCESSOR::load_from_vex2(VEX2 &scene, VEX2_FILTER const &filter, MODEL_STATISTICS_INTERFACE *statistics,
                                     KN::String const &source, bool debug)
{
    KN::String error;
    if (!state->begin(source, error))
        return fail(error);
    std::vector<VEX2_MESH const *> const taken = filtered_meshes(scene, filter);
    std::vector<MESH_SOURCE> meshes;
    meshes.reserve(taken.size());
    std::size_t size = 0;
    constexpr std::size_t usual_vertex_size = 64, triangle_size = 12;  // bytes
    for (VEX2_MESH const *const mesh : taken) {
        meshes.emplace_back(scene, *mesh);
        size += mesh->vertex_count() * usual_vertex_size + mesh->triangle_count() * triangle_size;
        if (meshes.back().weighted)
            state->skeleton.add(scene, *meshes.back().weighted);
        if (debug)
            KN::message_txt("mesh '" + meshes.back().name + "': " + std::to_string(mesh->triangle_count()) +
                            " triangles, " + std::to_string(mesh->vertex_count()) + " vertices");
    }
    state->skeleton.number_joints();
    state->document.buffer.reserve(size);

    auto const lighting = read_lighting_materials(state->lighting_file);
    std::vector<int> const numbers =
        state->take_materials(scene, meshes, {disable_alpha_test, tree, !without_side_files, &lighting});
    MODEL_MESH_OPTIONS const options{variable_bones_per_vert, &numbers, &state->materials};
    if (!state->take_levels(meshes, options, error))
        return fail(source + ": " + error);
    if (state->skeleton.joint_count() != 0 && !state->skeleton.write(scene, state->document, error))
        return fail(source + ": " + error);
    if (state->document.buffer.is_refused())
        return fail(source + ": the model needs more than 2 GiB of vertices and indices; split the scene");
    state->place_levels();

    std::vector<MODEL_LEVEL_STATISTICS> counts;
    for (std::size_t i = 0; i < state->levels.size(); ++i) {
        MODEL_LEVEL_STATISTICS &counted = counts.emplace_back(
            count_level(state->document, state->levels[i], std::uint32_t(state->skeleton.joint_count())));
        if (i > 0 && i <= state->distances.size())
            counted.distance = state->distances[i - 1];
        if (statistics)
            statistics->add_level(counted);
    }
    state->document.extras = {{"levels", as_value(counts)}};
    if (!state->skeleton_name.empty())
        state->document.extras.emplace_back("skeleton", state->skeleton_name);
    return true;
}

bool MODEL_PROCESSOR::write(KN::String const &model_file, MODEL_STATISTICS_INTERFACE *statistics)
{
    if (state->levels.empty())
        return fail(model_file + ": no model was loaded");
    KN::String error;
    bool const is_tile = !without_side_files && model_file.lower().find("tiles") != model_file.npos;
    std::vector<GLTF::GEOMETRY> meshes;
    if (is_tile || !description_file.empty())
        meshes = state->finest_geometry();
    if (is_tile && !write_terrain_tile(meshes, folder_of(model_file), error))
        return fail(error);
    if (!description_file.empty()) {
        CORVANEUTILITY::DESCRIPTION const description{std::move(meshes), false, incendiary_radius};
        std::size_t points = 0;
        KN::String const path = KN::disk_path(description_file);
        if (!KN::make_directories(folder_of(path)) ||
            !CORVANEUTILITY::write_description(description, path, points, error))
            return fail(error.empty() ? path + ": its folder cannot be made" : error);
    }

    KN::String const model_folder = tidy_folder(folder_of(final_target.empty() ? model_file : final_target));
    if (!state->add_textures(model_folder, tree))
        return fail(model_file + ": " + interrupted);
    if (!final_target.empty())
        state->add_place(model_folder);
    std::uint64_t size = 0;
    bool const written = GLTF::write_glb(state->document, model_file, error, &size);
    state->levels.clear();  // the document is used up
    if (!written)
        return fail(error);
    if (statistics)
        statistics->set_file_size(size);
    return true;
}

}  // namespace TOOLDATABUILDER
