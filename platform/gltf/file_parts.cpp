// A file is a header of 12 bytes, then chunks of { u32 size, u32 type, bytes }: JSON first, then the buffer. The JSON
// is taken apart by nlohmann's parser, which does not recurse.

#include "platform/gltf/file_parts.h"

#include "foundation/file.h"

namespace GLTF {

namespace {

constexpr std::uint32_t largest_json = 16u << 20;  // bytes
constexpr std::uint32_t file_mark = 0x46546c67, json_mark = 0x4e4f534a, buffer_mark = 0x004e4942;

template <class T>
void append_numbers(ARRAY const &array, std::vector<std::uint32_t> &to)
{
    for (std::size_t i = 0; i < array.count; ++i) {
        T value;
        std::memcpy(&value, array.first + i * array.stride, sizeof(T));
        to.push_back(value);
    }
}

// The first `size` bytes behind what was read already.
bool read_more(KN::FileIn &file, std::size_t size, FILE_PARTS &parts)
{
    std::size_t const before = parts.bytes.count;
    if (size > file.size() - before)
        return false;
    parts.bytes.resize(std::uint32_t(before + size));
    return file.read(parts.bytes.data + before, unsigned(size)) == size;
}

bool read_chunks(KN::FileIn &file, bool head_only, FILE_PARTS &parts)
{
    std::uint32_t head[5], chunk[2];  // header; size and type of the JSON
    if (!read_more(file, sizeof(head), parts))
        return false;
    std::memcpy(head, parts.bytes.data, sizeof(head));
    if (head[0] != file_mark || head[1] != 2 || head[4] != json_mark || head[3] > largest_json ||
        !read_more(file, head[3], parts))
        return false;
    unsigned char const *const json = parts.bytes.data + sizeof(head);
    parts.json = JSON::parse(json, json + head[3], nullptr, false);
    if (!parts.json.is_object())
        return false;
    if (head_only || parts.bytes.count == file.size())
        return true;
    std::size_t const place = parts.bytes.count + sizeof(chunk);
    if (!read_more(file, file.size() - parts.bytes.count, parts) || parts.bytes.count < place)
        return false;
    std::memcpy(chunk, parts.bytes.data + place - sizeof(chunk), sizeof(chunk));
    if (chunk[1] != buffer_mark || chunk[0] > parts.bytes.count - place)
        return false;
    parts.buffer = parts.bytes.data + place;
    parts.buffer_size = chunk[0];
    return true;
}

}  // namespace

bool read_parts(KN::String const &path, bool head_only, FILE_PARTS &parts, KN::String &error)
{
    KN::FileIn file;
    if (!file.open(path, true)) {
        error = path + ": cannot be read";
        return false;
    }
    if (read_chunks(file, head_only, parts))
        return true;
    error = damaged(path);
    return false;
}

KN::String damaged(KN::String const &path) { return path + ": is no binary glTF file, or is damaged"; }

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

JSON const *element(JSON const &object, char const *name, std::uint64_t index)
{
    auto const list = object.find(name);
    if (list == object.end() || !list->is_array() || index >= list->size() || !(*list)[index].is_object())
        return nullptr;
    return &(*list)[index];
}

bool is_placed(JSON const &node)
{
    return node.contains("matrix") || node.contains("translation") || node.contains("rotation") ||
           node.contains("scale");
}

std::string text(JSON const &object, char const *name)
{
    auto const place = object.find(name);
    return place != object.end() && place->is_string() ? place->get<std::string>() : std::string();
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
    std::size_t const size = component == ARRAY::type_u8 ? 1 : component == ARRAY::type_u16 ? 2 : 4;
    std::size_t const element_size = size * std::size_t(components);
    if (!number(*view, "byteStride", element_size, stride) || stride < element_size)
        return false;
    if (view_offset + length > parts.buffer_size || offset > length || count == 0 || length - offset < element_size ||
        count - 1 > (length - offset - element_size) / stride)
        return false;
    out = {parts.buffer + view_offset + offset, stride, count, int(component)};
    return true;
}

bool append_indices(ARRAY const &array, std::size_t base, std::size_t vertex_count, std::vector<std::uint32_t> &to)
{
    std::size_t const start = to.size();
    if (array.component == ARRAY::type_u8)
        append_numbers<std::uint8_t>(array, to);
    else if (array.component == ARRAY::type_u16)
        append_numbers<std::uint16_t>(array, to);
    else if (array.component == ARRAY::type_u32)
        append_numbers<std::uint32_t>(array, to);
    else
        return false;
    for (std::size_t i = start; i < to.size(); ++i) {
        if (to[i] >= vertex_count)
            return false;
        to[i] += std::uint32_t(base);
    }
    return array.count % 3 == 0;
}

}  // namespace GLTF
