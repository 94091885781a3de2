#include "platform/gltf/file_parts.h"
#include "platform/gltf/geometry.h"

#include <cmath>

namespace GLTF {

namespace {

bool append_positions(ARRAY const &array, GEOMETRY &to)
{
    if (array.component != ARRAY::type_f32)
        return false;
    std::size_t const start = to.positions.size();
    to.positions.resize(start + array.count * 3);
    for (std::size_t i = 0; i < array.count; ++i)
        std::memcpy(&to.positions[start + i * 3], array.first + i * array.stride, 12);
    for (std::size_t i = start; i < to.positions.size(); ++i)
        if (!std::isfinite(to.positions[i]))
            return false;
    return true;
}

bool append_primitive(FILE_PARTS const &parts, JSON const &primitive, GEOMETRY &to)
{
    auto const attributes = primitive.find("attributes");
    ARRAY positions, indices;
    if (attributes == primitive.end() || !attributes->is_object() ||
        !find_array(parts, *attributes, "POSITION", 3, positions) ||
        !find_array(parts, primitive, "indices", 1, indices))
        return false;
    std::size_t const base = to.positions.size() / 3;
    if (base + positions.count > 0xffffffff)
        return false;
    return append_positions(positions, to) && append_indices(indices, base, positions.count, to.indices);
}

void take_texts(JSON const &node, GEOMETRY &to)
{
    auto const extras = node.find("extras");
    if (extras == node.end() || !extras->is_object())
        return;
    for (auto const &[name, value] : extras->items())
        if (value.is_string())
            to.texts[name] = value.get<std::string>();
}

// False if the node or its mesh is damaged. A mesh that several nodes use counts for each, up to `room` triangles in
// all.
bool append_node(FILE_PARTS const &parts, JSON const &node, std::size_t &room, std::vector<GEOMETRY> &meshes)
{
    if (!node.is_object())
        return false;
    if (!node.contains("mesh"))
        return true;
    std::uint64_t index;
    JSON const *const mesh = number(node, "mesh", 0, index) ? element(parts.json, "meshes", index) : nullptr;
    if (mesh == nullptr || is_placed(node))
        return false;
    GEOMETRY geometry;
    geometry.name = text(node, "name");
    take_texts(node, geometry);
    auto const primitives = mesh->find("primitives");
    if (primitives == mesh->end() || !primitives->is_array())
        return false;
    for (JSON const &primitive : *primitives) {
        if (!primitive.is_object() || !append_primitive(parts, primitive, geometry))
            return false;
        if (geometry.positions.size() + geometry.indices.size() > room)
            return false;
    }
    room -= geometry.positions.size() + geometry.indices.size();
    meshes.push_back(std::move(geometry));
    return true;
}

}  // namespace

bool read_geometry(KN::String const &path, std::vector<GEOMETRY> &meshes, KN::String &error)
{
    meshes.clear();
    FILE_PARTS parts;
    if (!read_parts(path, false, parts, error))
        return false;
    auto const nodes = parts.json.find("nodes");
    bool good = true;
    if (nodes != parts.json.end()) {
        // Numbers: what a file may hold by naming meshes repeatedly.
        std::size_t room = std::size_t(parts.bytes.count) * 4;
        good = nodes->is_array();
        for (std::size_t i = 0; good && i < nodes->size(); ++i)
            good = append_node(parts, (*nodes)[i], room, meshes);
    }
    if (!good) {
        meshes.clear();
        error = damaged(path);
    }
    return good;
}

}  // namespace GLTF
