// Scenes for tests: builders that put together a scene in code, and the way of a scene to bytes and back.
#pragma once

#include "scene/buffer.h"
#include "scene/scene.h"
#include "scene/writer.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <unistd.h>

namespace TEST_SCENE {

using namespace VEX2_LOADER;

// A folder of the test program's own that goes when the object goes.
class SCRATCH_FOLDER {
public:
    SCRATCH_FOLDER()
        : folder(std::filesystem::temp_directory_path() /
                 ("mox_scene_test_" + std::to_string(::getpid()) + "_" + std::to_string(next_number++)))
    {
        std::filesystem::create_directories(folder);
    }
    ~SCRATCH_FOLDER() { std::filesystem::remove_all(folder); }

    KN::UniString path(std::string const &name) const { return KN::from_utf8((folder / name).string()); }
    bool holds(std::string const &name) const { return std::filesystem::exists(folder / name); }
    void put(std::string const &name, std::string const &bytes) const
    {
        std::ofstream(folder / name, std::ios::binary) << bytes;
    }
    std::string get(std::string const &name) const
    {
        std::ifstream in(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    std::filesystem::path const folder;

private:
    inline static int next_number = 0;
};

// The file that VEX2::write makes of the scene.
inline std::string file_of(VEX2 const &scene)
{
    SCRATCH_FOLDER scratch;
    VEX2_CHUNK_WRITER writer(scratch.path("scene.vx2"), false, true);
    writer.write_references = false;
    bool const good = scene.write(writer);
    return writer.close() && good ? scratch.get("scene.vx2") : "the scene was not written";
}

// Loads from a heap block of exactly the bytes' size, so that a sanitizer sees one byte too many. `fault` gets the line
// of a failed load.
inline bool load_bytes(VEX2 &scene, std::string const &bytes, KN::String *fault = nullptr,
                       KN::UniString const &path = u"test.vx2")
{
    auto const block = std::make_unique<char[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), block.get());
    VEX2_READ_BUFFER buffer(path, block.get(), unsigned(bytes.size()));
    bool const good = scene.load(buffer, true);
    if (fault)
        *fault = buffer.fault;
    return good;
}

// A channel that runs from `from` at time 0 to `to` at time 10.
template <class CHANNEL, class VALUE>
CHANNEL *ramp(VALUE const &from, VALUE const &to)
{
    CHANNEL *const channel = new CHANNEL;
    append_key(*channel, 0, from);
    append_key(*channel, 10, to);
    return channel;
}

inline VEX2_FLOAT_CHANNEL *ramp(float from, float to) { return ramp<VEX2_FLOAT_CHANNEL>(from, to); }
inline VEX2_INT_CHANNEL *number(std::uint32_t value) { return constant_channel<VEX2_INT_CHANNEL>(value); }

template <class OBJECT>
OBJECT *named(OBJECT *object, char16_t const *name)
{
    object->name = name;
    object->second_text = u"second";
    object->third_text = u"third";
    object->attributes.add_string(u"class_TYPE", u"DISPLAY");
    object->extent = ramp<VEX2_VECTOR_PAIR_CHANNEL>(VEX2_VECTOR_PAIR{{0, 0, 0}, {1, 1, 1}},
                                                    VEX2_VECTOR_PAIR{{-1, -1, -1}, {2, 2, 2}});
    return object;
}

// One triangle with one UVW set and one frame a vertex; `finish(vertex, i)` fills in what the kind has more.
template <class MESH, class FINISH>
MESH *triangle_mesh(char16_t const *name, FINISH const &finish)
{
    MESH *const mesh = named(new MESH, name);
    mesh->first_indices.append(7u);
    mesh->second_indices.append(8u);
    mesh->colour_flag = 1;
    VEX2_VECTOR const corners[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (unsigned i = 0; i < 3; ++i) {
        auto &vertex = mesh->vertices.append();
        vertex.position = corners[i];
        vertex.normal = {0, 0, 1};
        vertex.colour = {1, 0.5f, 0.25f, 1};
        vertex.uvws.append(corners[i]);
        vertex.frames.append(VEX2_TANGENT_FRAME{{0, 1, 0}, {1, 0, 0}});
        finish(vertex, i);
    }
    VEX2_POLYGON_SET &section = mesh->sections.append();
    section.triangles.append(VEX2_TRIANGLE{{0, 1, 2}});
    section.material_index = 0;
    return mesh;
}

inline VEX2_ANIMATED_MESH *animated_triangle()
{
    VEX2_ANIMATED_MESH *const mesh = named(new VEX2_ANIMATED_MESH, u"animated");
    VEX2_VECTOR const corners[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (VEX2_VECTOR const &corner : corners) {
        VEX2_ANIMATED_VERTEX &vertex = mesh->vertices.append();
        vertex.position = ramp<VEX2_VECTOR_CHANNEL>(corner, corner + VEX2_VECTOR{0, 0, 10});
        vertex.colour = constant_channel<VEX2_COLOUR_CHANNEL>(VEX2_COLOUR{1, 1, 1, 1});
        vertex.uvws.append(constant_channel<VEX2_VECTOR_CHANNEL>(corner));
        vertex.frames.append(constant_channel<VEX2_TANGENT_FRAME_CHANNEL>(VEX2_TANGENT_FRAME{{0, 1, 0}, {1, 0, 0}}));
    }
    mesh->sections.append().triangles.append(VEX2_TRIANGLE{{0, 1, 2}});
    return mesh;
}

inline VEX2_BITMAP_MAP *bitmap(char16_t const *file)
{
    VEX2_BITMAP_MAP *const map = new VEX2_BITMAP_MAP;
    map->name = u"bitmap";
    map->amount = ramp(0, 1);
    map->uv.offset = ramp<VEX2_VECTOR2_CHANNEL>(VEX2_VECTOR2{0, 0}, VEX2_VECTOR2{1, 2});
    map->uv.tiling = constant_channel<VEX2_VECTOR2_CHANNEL>(VEX2_VECTOR2{1, 1});
    map->uv.angles = constant_channel<VEX2_VECTOR_CHANNEL>(VEX2_VECTOR{0, 0, 1});
    map->bitmap.file = file;
    map->bitmap.crop.enabled = true;
    map->bitmap.crop.rectangle = constant_channel<VEX2_RECTANGLE_CHANNEL>(VEX2_RECTANGLE{0, 0, 1, 1});
    return map;
}

inline VEX2_BLEND_MAP *blend(VEX2_MAP *first, VEX2_MAP *second)
{
    VEX2_BLEND_MAP *const map = new VEX2_BLEND_MAP;
    map->name = u"blend";
    map->first = first;
    map->second = second;
    map->flags[1] = true;
    return map;
}

template <class LIGHT>
LIGHT *light(char16_t const *name)
{
    LIGHT *const made = named(new LIGHT, name);
    made->enabled = number(1);
    made->colour_0 = constant_channel<VEX2_COLOUR_CHANNEL>(VEX2_COLOUR{1, 1, 0.5f, 1});
    made->target = constant_channel<VEX2_VECTOR_CHANNEL>(VEX2_VECTOR{0, -1, 0});
    made->intensity = ramp(1, 2);
    made->projector = bitmap(u"gobo.tga");
    made->near_range.start = ramp(0, 1);
    made->far_range.end = ramp(5, 6);
    made->shadow.enabled = number(1);
    made->shadow.look.value = ramp(0, 1);
    made->shadow.look.map = bitmap(u"shadow.tga");
    made->shadow.bias.number = number(3);
    made->shadow.filter.third_number = number(4);
    return made;
}

template <class ATTACHMENT>
ATTACHMENT *attachment(std::uint32_t index)
{
    ATTACHMENT *const made = named(new ATTACHMENT, u"attachment");
    made->index = index;
    if constexpr (requires { made->indices; })
        made->indices.append(11u);
    if constexpr (requires { made->second_indices; })
        made->second_indices.append(12u);
    if constexpr (requires { made->sections; })
        made->sections.append().triangles.append(VEX2_TRIANGLE{{2, 1, 0}});
    return made;
}

inline void add_hierarchy(VEX2 &scene)
{
    scene.hierarchy.add_node(u"root", -1, {1, 2, 3});
    VEX2_VECTOR const scale{2, 2, 2};
    scene.hierarchy.add_node(u"child", 0, {0, 1, 0}, {}, &scale);
    VEX2_MATRIX_NODE &child = scene.hierarchy.nodes[1];
    // A quarter turn about z.
    child.rotation =
        ramp<VEX2_LERP_ROTATION_CHANNEL>(VEX2_QUATERNION{}, VEX2_QUATERNION{0, 0, 0.70710678f, 0.70710678f});
    child.node_text = u"node text";
    child.attributes.add_string(u"note", u"caf\u00e9 \U0001F600");
    child.attributes.ints.append().value = number(5);
    child.attributes.floats.append().value = ramp(0, 1);
    child.attributes.vectors.append().value = constant_channel<VEX2_VECTOR_CHANNEL>(VEX2_VECTOR{1, 2, 3});
    child.attributes.vector4s.append().value = constant_channel<VEX2_VECTOR4_CHANNEL>(VEX2_VECTOR4{1, 2, 3, 4});
}

inline void add_meshes(VEX2 &scene)
{
    scene.static_meshes.append(triangle_mesh<VEX2_STATIC_MESH>(u"static", [](auto &, unsigned) {}));
    scene.animated_meshes.append(animated_triangle());
    VEX2_MORPH_MESH *const morph = triangle_mesh<VEX2_MORPH_MESH>(u"morph", [](VEX2_MORPH_VERTEX &vertex, unsigned i) {
        vertex.deltas.append(VEX2_MORPH_DELTA{{0, 0, float(i)}, 0});
        vertex.deltas.append(VEX2_MORPH_DELTA{{1, 0, 0}, 1});
    });
    morph->targets.append().value = ramp(0, 1);
    morph->targets.append().value = ramp(1, 0);
    scene.morph_meshes.append(morph);
    scene.weighted_meshes.append(
        triangle_mesh<VEX2_WEIGHTED_MESH>(u"weighted", [](VEX2_WEIGHTED_VERTEX &vertex, unsigned i) {
            vertex.bind_position = vertex.position;
            vertex.bind_normal = vertex.normal;
            vertex.influences.append(VEX2_INFLUENCE{0, i == 0 ? 1 : 0.25f, {}, {}});
            if (i != 0)
                vertex.influences.append(VEX2_INFLUENCE{1, 0.75f, {}, {}});
        }));
}

inline void add_materials(VEX2 &scene)
{
    VEX2_STANDARD_MATERIAL *const standard = new VEX2_STANDARD_MATERIAL;
    standard->name = u"standard";
    standard->second_name = u"other";
    standard->attributes.add_string(u"surface", u"stone");
    standard->colour_1 = ramp<VEX2_COLOUR_CHANNEL>(VEX2_COLOUR{0, 0, 0, 1}, VEX2_COLOUR{1, 1, 1, 1});
    standard->amount_2 = ramp(0, 1);
    standard->flag = true;
    standard->maps.append(blend(bitmap(u"a.tga"), blend(nullptr, bitmap(u"b.tga"))));
    standard->maps.append(nullptr);
    scene.materials.append(standard);
    VEX2_SHADER_MATERIAL *const shader = new VEX2_SHADER_MATERIAL;
    shader->name = u"shader";
    shader->shader = u"rigid.fx";
    shader->technique = 2;
    shader->textures.append(VEX2_SHADER_TEXTURE{u"diffuse", u"wood.tga"});
    shader->slots.append(VEX2_SHADER_SLOT{u"slot", {3, 4}});
    shader->floats.append().value = ramp(0, 1);
    shader->ints.append().value = number(9);
    shader->vectors.append().value = constant_channel<VEX2_VECTOR_CHANNEL>(VEX2_VECTOR{1, 2, 3});
    shader->vector4s.append();
    shader->last_value = 77;
    scene.materials.append(shader);
}

inline VEX2_CAMERA *camera()
{
    VEX2_CAMERA *const made = named(new VEX2_CAMERA, u"camera");
    made->kind = 2;
    made->first_value = ramp(0.5f, 1);
    made->first_range = constant_channel<VEX2_RANGE_CHANNEL>(VEX2_RANGE{0.1f, 100});
    VEX2_BLUR_EFFECT *const blur = new VEX2_BLUR_EFFECT;
    blur->value_1 = ramp(0, 1);
    blur->number_7 = number(6);
    VEX2_DEPTH_EFFECT *const depth = new VEX2_DEPTH_EFFECT;
    depth->number_0 = number(1);
    depth->value_7 = ramp(2, 3);
    made->effects.append(blur);
    made->effects.append(nullptr);
    made->effects.append(depth);
    return made;
}

inline VEX2_SHAPE *shape()
{
    VEX2_SHAPE *const made = named(new VEX2_SHAPE, u"shape");
    VEX2_SPLINE &spline = made->splines.append();
    VEX2_ANIMATED_SPLINE &animated = made->animated_splines.append();
    VEX2_VECTOR const points[] = {{0, 0, 0}, {1, 0, 0}, {1, 2, 0}, {3, 2, 0}};
    for (VEX2_VECTOR const &point : points) {
        spline.points.append(point);
        animated.points.append(ramp<VEX2_VECTOR_CHANNEL>(point, point + VEX2_VECTOR{0, 0, 10}));
    }
    spline.segments.append(VEX2_SPLINE_SEGMENT{1, 1});
    spline.segments.append(VEX2_SPLINE_SEGMENT{2, 4});
    animated.segments.append(VEX2_SPLINE_SEGMENT{3, 6});
    return made;
}

// One of everything that a scene can hold, and two of some.
inline std::unique_ptr<VEX2> make_full_scene()
{
    auto scene = std::make_unique<VEX2>();
    scene->header.source_text = u"C:\\art\\full.max";
    scene->info.end_time = 10;
    scene->info.background = constant_channel<VEX2_COLOUR_CHANNEL>(VEX2_COLOUR{0, 0, 0, 1});
    scene->info.background_map = bitmap(u"sky.tga");
    for (unsigned i = 0; i < 8; ++i)
        scene->info.stamp[i] = std::uint8_t(0xa0 + i);
    scene->ambient = new VEX2_GLOBAL_AMBIENT;
    scene->ambient->colour = ramp<VEX2_COLOUR_CHANNEL>(VEX2_COLOUR{0, 0, 0, 1}, VEX2_COLOUR{1, 1, 1, 1});
    scene->tint = new VEX2_GLOBAL_TINT;
    scene->tint->level = ramp(0, 1);
    scene->int_track.value = ramp<VEX2_INT_CHANNEL>(3u, 4u);
    add_hierarchy(*scene);
    add_meshes(*scene);
    add_materials(*scene);
    scene->lights.append(light<VEX2_SPOT_LIGHT>(u"spot"));
    scene->lights.append(light<VEX2_OMNI_LIGHT>(u"omni"));
    scene->lights.append(light<VEX2_DIRECT_LIGHT>(u"direct"));
    scene->cameras.append(camera());
    scene->shapes.append(shape());
    scene->helpers.append(named(new VEX2_HELPER, u"helper"));
    scene->name_links.append(named(new VEX2_NAME_LINK, u"name link"))->link_text = u"link text";
    VEX2_LINK *const link = scene->links.append(named(new VEX2_LINK, u"link"));
    link->indices.append(1u);
    link->first_text = u"first";
    link->second_text_of_link = u"second of link";
    for (std::uint32_t id = 0; id < VEX2::attachment_list_count; ++id)
        scene->attachment_list(id)->append(attachment<VEX2_ATTACHMENT>(id));
    scene->attachments_5.append(attachment<VEX2_POLYGON_ATTACHMENT>(0));
    scene->attachments_7.append(attachment<VEX2_INDEX_ATTACHMENT>(1));
    scene->attachments_8.append(attachment<VEX2_WEIGHT_ATTACHMENT>(2));
    scene->references_a.append(new VEX2_SCENE_REFERENCE(15))->path = u"missing_a.vx2";
    scene->references_b.append(new VEX2_SCENE_REFERENCE(20))->path = u"missing_b.vx2";
    scene->prepare_weighted_meshes();
    scene->seek(0);
    return scene;
}

}  // namespace TEST_SCENE
