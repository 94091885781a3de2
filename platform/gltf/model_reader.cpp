// A level is a node with nodes for its meshes below it; the finest one names the others in its MSFT_lod extension.

#include "platform/gltf/file_parts.h"
#include "platform/gltf/model.h"
#include "platform/gltf/uri.h"

#include <algorithm>
#include <cmath>

namespace GLTF {

namespace {

class MODEL_READER {
public:
    MODEL_READER(FILE_PARTS const &file, MODEL_HEAD &made_head, std::vector<MODEL_PART> *made_parts)
        : from(file), head(made_head), parts(made_parts), room(std::size_t(file.bytes.count) * 4)
    {}

    bool read();

private:
    bool read_materials();
    bool read_level(std::vector<std::uint64_t> nodes);
    bool read_mesh(JSON const &mesh, MODEL_HEAD::MESH_USE &use);
    bool read_primitive(JSON const &primitive, int material);
    void add_coarser_levels(JSON const &node);

    FILE_PARTS const &from;
    MODEL_HEAD &head;
    std::vector<MODEL_PART> *parts;             // null after the finest level
    std::size_t room;                           // numbers: what a file may hold by naming its meshes repeatedly
    std::vector<bool> seen;                     // nodes
    std::vector<std::uint64_t> coarser_levels;  // nodes
};

float share(JSON const &object, char const *name, float otherwise)
{
    auto const place = object.find(name);
    return place != object.end() && place->is_number() ? std::clamp(place->get<float>(), 0.0f, 1.0f) : otherwise;
}

// The member, or an empty object.
JSON const &member(JSON const &object, char const *name)
{
    static JSON const none = JSON::object();
    auto const place = object.find(name);
    return place != object.end() && place->is_object() ? *place : none;
}

TEXTURE texture_of(JSON const &json, JSON const &use)
{
    TEXTURE texture;
    std::uint64_t index, source, uv_set;
    if (use.empty() || !number(use, "index", ~0ull, index) || !number(use, "texCoord", 0, uv_set) || uv_set > 7)
        return texture;
    JSON const *const entry = element(json, "textures", index);
    if (entry == nullptr || !number(*entry, "source", ~0ull, source))
        return texture;
    if (JSON const *const image = element(json, "images", source))
        texture.uri = decoded_uri(text(*image, "uri"));
    texture.uv_set = int(uv_set);
    return texture;
}

MATERIAL material_of(JSON const &json, JSON const &object)
{
    MATERIAL material;
    material.name = text(object, "name");
    JSON const &surface = member(object, "pbrMetallicRoughness");
    auto const colour = surface.find("baseColorFactor");
    if (colour != surface.end() && colour->is_array() && colour->size() == 4)
        for (std::size_t i = 0; i < 4; ++i)
            if ((*colour)[i].is_number())
                material.colour[i] = std::clamp((*colour)[i].get<float>(), 0.0f, 1.0f);
    material.diffuse = texture_of(json, member(surface, "baseColorTexture"));
    material.normal = texture_of(json, member(object, "normalTexture"));
    std::string const alpha = text(object, "alphaMode");
    material.alpha = alpha == "MASK" ? MATERIAL::CUT_OFF : alpha == "BLEND" ? MATERIAL::BLENDED : MATERIAL::SOLID;
    material.cut_off = share(object, "alphaCutoff", 0.5f);
    return material;
}

// `count` elements as floats; integers stand for 0 to 1.
bool read_floats(ARRAY const &array, int components, std::vector<float> &to)
{
    if (array.component != ARRAY::type_f32 && array.component != ARRAY::type_u16 && array.component != ARRAY::type_u8)
        return false;
    to.resize(array.count * std::size_t(components));
    float *next = to.data();
    for (std::size_t i = 0; i < array.count; ++i) {
        unsigned char const *const element = array.first + i * array.stride;
        for (int c = 0; c < components; ++c, ++next) {
            std::uint16_t wide;
            if (array.component == ARRAY::type_f32)
                std::memcpy(next, element + c * 4, 4);
            else if (array.component == ARRAY::type_u8)
                *next = float(element[c]) / 255;
            else
                std::memcpy(&wide, element + c * 2, 2), *next = float(wide) / 65535;
        }
    }
    return std::ranges::all_of(to, [](float value) { return std::isfinite(value); });
}

// Absent: empty. Present: one for each vertex.
bool read_attribute(FILE_PARTS const &from, JSON const &attributes, std::string const &name, int components,
                    std::size_t vertex_count, std::vector<float> &to)
{
    if (!attributes.contains(name))
        return true;
    ARRAY array;
    return find_array(from, attributes, name.c_str(), components, array) && array.count == vertex_count &&
           read_floats(array, components, to);
}

// Colours have three or four components; three mean opaque ones.
bool read_colours(FILE_PARTS const &from, JSON const &attributes, std::size_t vertex_count, std::vector<float> &to)
{
    std::uint64_t index;
    JSON const *const accessor =
        number(attributes, "COLOR_0", ~0ull, index) ? element(from.json, "accessors", index) : nullptr;
    if (accessor == nullptr || text(*accessor, "type") != "VEC3")
        return read_attribute(from, attributes, "COLOR_0", 4, vertex_count, to);
    std::vector<float> opaque;
    if (!read_attribute(from, attributes, "COLOR_0", 3, vertex_count, opaque))
        return false;
    to.resize(vertex_count * 4, 1);
    for (std::size_t i = 0; i < vertex_count; ++i)
        std::copy_n(&opaque[i * 3], 3, &to[i * 4]);
    return true;
}

bool MODEL_READER::read_primitive(JSON const &primitive, int material)
{
    JSON const &attributes = member(primitive, "attributes");
    ARRAY positions, indices;
    if (!find_array(from, attributes, "POSITION", 3, positions) || positions.component != ARRAY::type_f32 ||
        !find_array(from, primitive, "indices", 1, indices))
        return false;
    std::size_t const size = positions.count * 3 + indices.count;
    if (size > room)
        return false;
    room -= size;
    MODEL_PART part;
    part.material = material;
    int const uv_set = material < 0 ? 0 : head.materials[std::size_t(material)].diffuse.uv_set;
    std::size_t const count = positions.count;
    if (!read_floats(positions, 3, part.positions) || !append_indices(indices, 0, count, part.indices) ||
        !read_attribute(from, attributes, "NORMAL", 3, count, part.normals) ||
        !read_attribute(from, attributes, "TANGENT", 4, count, part.tangents) ||
        !read_attribute(from, attributes, "TEXCOORD_" + std::to_string(uv_set), 2, count, part.uvs) ||
        !read_colours(from, attributes, count, part.colours))
        return false;
    parts->push_back(std::move(part));
    return true;
}

bool MODEL_READER::read_mesh(JSON const &mesh, MODEL_HEAD::MESH_USE &use)
{
    use.mesh = text(mesh, "name");
    auto const primitives = mesh.find("primitives");
    if (primitives == mesh.end() || !primitives->is_array() || primitives->size() > room)
        return false;
    room -= primitives->size();
    for (JSON const &primitive : *primitives) {
        std::uint64_t material, mode;
        if (!primitive.is_object() || !number(primitive, "material", ~0u, material) ||
            !number(primitive, "mode", 4, mode) || mode != 4)
            return false;
        if (material != ~0u && material >= head.materials.size())
            return false;
        if (material != ~0u)
            use.materials.push_back(int(material));
        if (parts && !read_primitive(primitive, material == ~0u ? -1 : int(material)))
            return false;
    }
    std::ranges::sort(use.materials);
    use.materials.erase(std::unique(use.materials.begin(), use.materials.end()), use.materials.end());
    return true;
}

// All meshes at and below `nodes`. Each node stands in one place of the hierarchy.
bool MODEL_READER::read_level(std::vector<std::uint64_t> nodes)
{
    std::vector<MODEL_HEAD::MESH_USE> &level = head.levels.emplace_back();
    std::ranges::reverse(nodes);  // the last one is taken next
    while (!nodes.empty()) {
        std::uint64_t const index = nodes.back(), none = ~0u;
        nodes.pop_back();
        JSON const *const node = element(from.json, "nodes", index);
        if (node == nullptr || (index < seen.size() && seen[index]))
            return false;
        seen.resize(std::max(seen.size(), std::size_t(index) + 1));
        seen[index] = true;

        std::uint64_t mesh_index;
        if (!number(*node, "mesh", none, mesh_index))
            return false;
        if (mesh_index != none) {
            JSON const *const mesh = element(from.json, "meshes", mesh_index);
            if (mesh == nullptr || is_placed(*node) || !read_mesh(*mesh, level.emplace_back()))
                return false;
        }
        auto const children = node->find("children");
        if (children != node->end() && children->is_array())
            for (auto child = children->rbegin(); child != children->rend(); ++child) {
                if (!child->is_number_unsigned())
                    return false;
                nodes.push_back(child->get<std::uint64_t>());
            }
        if (head.levels.size() == 1)
            add_coarser_levels(*node);
    }
    return true;
}

void MODEL_READER::add_coarser_levels(JSON const &node)
{
    JSON const &extension = member(member(node, "extensions"), "MSFT_lod");
    auto const ids = extension.find("ids");
    if (ids == extension.end() || !ids->is_array())
        return;
    for (JSON const &id : *ids)
        coarser_levels.push_back(id.is_number_unsigned() ? id.get<std::uint64_t>() : ~0ull);
}

bool MODEL_READER::read_materials()
{
    auto const list = from.json.find("materials");
    if (list == from.json.end())
        return true;
    if (!list->is_array())
        return false;
    for (JSON const &material : *list)
        head.materials.push_back(material.is_object() ? material_of(from.json, material) : MATERIAL());
    return true;
}

bool MODEL_READER::read()
{
    std::uint64_t scene_index;
    JSON const *const scene =
        number(from.json, "scene", 0, scene_index) ? element(from.json, "scenes", scene_index) : nullptr;
    auto const roots = scene ? scene->find("nodes") : from.json.end();
    if (scene == nullptr || roots == scene->end() || !roots->is_array() || !read_materials())
        return false;
    head.skeleton = text(member(*scene, "extras"), "skeleton");
    head.place = text(member(*scene, "extras"), "place");
    std::vector<std::uint64_t> nodes;
    for (JSON const &root : *roots)
        nodes.push_back(root.is_number_unsigned() ? root.get<std::uint64_t>() : ~0ull);
    if (!read_level(nodes))
        return false;
    parts = nullptr;
    for (std::uint64_t const node : coarser_levels)
        if (!read_level({node}))
            return false;
    return true;
}

}  // namespace

bool read_model(KN::String const &path, MODEL_HEAD &head, std::vector<MODEL_PART> *parts, KN::String &error)
{
    head = {};
    if (parts)
        parts->clear();
    FILE_PARTS file;
    if (!read_parts(path, parts == nullptr, file, error))
        return false;
    if (MODEL_READER(file, head, parts).read())
        return true;
    head = {};
    if (parts)
        parts->clear();
    error = damaged(path);
    return false;
}

}  // namespace GLTF
