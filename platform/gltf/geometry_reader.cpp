// A file is a header of 12 bytes, then chunks of { u32 size, u32 type, bytes }: JSON first, then the buffer. The JSON
// is taken apart by nlohmann's parser, which does not recurse; nothing in it is believed before it is checked.

#include "platform/gltf/geometry.h"

#include "foundation/file.h"
#include "foundation/mem_buffer.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace GLTF {

namespace {

using JSON = nlohmann::json;

constexpr std::uint32_t largest_json = 16u << 20;  // bytes

struct FILE_PARTS {
    JSON json;
    unsigned char const *buffer = nullptr;
    std::size_t buffer_size = 0;
};

// An array of the file, checked to lie within the buffer.
struct ARRAY {
    unsigned char const *first = nullptr;
    std::size_t stride = 0;
    std::size_t count = 0;
    int component = 0;
};

constexpr int type_u8 = 5121, type_u16 = 5123, type_u32 = 5125, type_f32 = 5126;

// The member as a whole number; `otherwise` if it is absent; false if it is no whole number of at most 32 bits.
bool number(JSON const &object, char const *name, std::uint64_t otherwise, std::uint64_t &out)
{
    auto const place = object.find(name);
    if (place == object.end()) {
        out = otherwise;
        return true;
    }
    if (!place->is_number_unsigned())
        return false;
    out = place->get<std::uint64_t>();
    return out <= 0xffffffff;
}

// Element `index` of the list `name`, or null.
JSON const *element(JSON const &object, char const *name, std::uint64_t index)
{
    auto const list = object.find(name);
    if (list == object.end() || !list->is_array() || index >= list->size() || !(*list)[index].is_object())
        return nullptr;
    return &(*list)[index];
}

bool split(KN::DynamicArray<unsigned char> &bytes, FILE_PARTS &parts)
{
    KN::MemBuffer cursor;
    cursor.start = cursor.cursor = bytes.data;
    cursor.end = bytes.data + bytes.count;
    std::uint32_t header[3], chunk[2];
    if (!cursor.read_value(header) || header[0] != 0x46546c67 || header[1] != 2)
        return false;
    if (!cursor.read_value(chunk) || chunk[1] != 0x4e4f534a || chunk[0] > largest_json || chunk[0] > cursor.left())
        return false;
    parts.json = JSON::parse(cursor.cursor, cursor.cursor + chunk[0], nullptr, false);
    if (!parts.json.is_object())
        return false;
    cursor.cursor += chunk[0];
    if (cursor.left() == 0)
        return true;
    if (!cursor.read_value(chunk) || chunk[1] != 0x004e4942 || chunk[0] > cursor.left())
        return false;
    parts.buffer = cursor.cursor;
    parts.buffer_size = chunk[0];
    return true;
}

bool find_array(FILE_PARTS const &parts, JSON const &owner, char const *name, int components, ARRAY &out)
{
    std::uint64_t accessor_index, view_index, component, count, offset, buffer, view_offset, length, stride;
    if (!number(owner, name, ~0ull, accessor_index))
        return false;
    JSON const *const accessor = element(parts.json, "accessors", accessor_index);
    if (accessor == nullptr || accessor->contains("sparse") || !number(*accessor, "bufferView", ~0ull, view_index) ||
        !number(*accessor, "componentType", 0, component) || !number(*accessor, "count", 0, count) ||
        !number(*accessor, "byteOffset", 0, offset))
        return false;
    JSON const *const view = element(parts.json, "bufferViews", view_index);
    if (view == nullptr || !number(*view, "buffer", 1, buffer) || buffer != 0 ||
        !number(*view, "byteOffset", 0, view_offset) || !number(*view, "byteLength", 0, length))
        return false;
    std::size_t const size = component == type_u8 ? 1 : component == type_u16 ? 2 : 4;
    std::size_t const element_size = size * std::size_t(components);
    if (!number(*view, "byteStride", element_size, stride) || stride < element_size)
        return false;
    if (view_offset + length > parts.buffer_size || offset > length || count == 0 || length - offset < element_size ||
        count - 1 > (length - offset - element_size) / stride)
        return false;
    out = {parts.buffer + view_offset + offset, stride, count, int(component)};
    return true;
}

bool append_positions(ARRAY const &array, GEOMETRY &to)
{
    if (array.component != type_f32)
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

template <class T>
void append_numbers(ARRAY const &array, GEOMETRY &to)
{
    for (std::size_t i = 0; i < array.count; ++i) {
        T value;
        std::memcpy(&value, array.first + i * array.stride, sizeof(T));
        to.indices.push_back(value);
    }
}

// `base` and `limit`: the primitive's vertices among those of the mesh.
bool append_indices(ARRAY const &array, std::size_t base, std::size_t limit, GEOMETRY &to)
{
    std::size_t const start = to.indices.size();
    if (array.component == type_u8)
        append_numbers<std::uint8_t>(array, to);
    else if (array.component == type_u16)
        append_numbers<std::uint16_t>(array, to);
    else if (array.component == type_u32)
        append_numbers<std::uint32_t>(array, to);
    else
        return false;
    for (std::size_t i = start; i < to.indices.size(); ++i) {
        if (to.indices[i] >= limit - base)
            return false;
        to.indices[i] += std::uint32_t(base);
    }
    return array.count % 3 == 0;
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
    return append_positions(positions, to) && append_indices(indices, base, to.positions.size() / 3, to);
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
    if (mesh == nullptr || node.contains("matrix") || node.contains("translation") || node.contains("rotation") ||
        node.contains("scale"))
        return false;
    GEOMETRY geometry;
    auto const name = node.find("name");
    if (name != node.end() && name->is_string())
        geometry.name = name->get<std::string>();
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

bool read_bytes(KN::String const &path, KN::DynamicArray<unsigned char> &bytes, KN::String &error)
{
    KN::FileIn file;
    if (file.open(path, true)) {
        bytes.resize(file.size());
        if (file.read(bytes.data, bytes.count) == bytes.count)
            return true;
    }
    error = path + ": cannot be read";
    return false;
}

}  // namespace

bool read_geometry(KN::String const &path, std::vector<GEOMETRY> &meshes, KN::String &error)
{
    meshes.clear();
    KN::DynamicArray<unsigned char> bytes;
    if (!read_bytes(path, bytes, error))
        return false;
    FILE_PARTS parts;
    bool good = split(bytes, parts);
    auto const nodes = good ? parts.json.find("nodes") : parts.json.end();
    if (good && nodes != parts.json.end()) {
        std::size_t room = std::size_t(bytes.count) * 4;  // numbers: what a file may hold by naming meshes repeatedly
        good = nodes->is_array();
        for (std::size_t i = 0; good && i < nodes->size(); ++i)
            good = append_node(parts, (*nodes)[i], room, meshes);
    }
    if (!good) {
        meshes.clear();
        error = path + ": is no binary glTF file, or is damaged";
    }
    return good;
}

}  // namespace GLTF
