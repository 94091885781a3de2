// GLTF::FILE_PARTS: the JSON and the buffer of a binary glTF file, and the look-ups that its readers share. Nothing in
// either is believed before it is checked. Only for the sources of this folder: the JSON parser is a heavy header.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"

#include <cstdint>
#include <nlohmann/json.hpp>

namespace GLTF {

using JSON = nlohmann::json;

struct FILE_PARTS {
    JSON json;  // an object
    unsigned char const *buffer = nullptr;
    std::size_t buffer_size = 0;

    KN::DynamicArray<unsigned char> bytes;  // of the file; `buffer` points into them
};

// False, with a line in `error`, for a file that cannot be read or is no binary glTF. With `head_only` the buffer stays
// on the disk.
bool read_parts(KN::String const &path, bool head_only, FILE_PARTS &parts, KN::String &error);
// The line of a reader that has found something wrong.
KN::String damaged(KN::String const &path);

// An array of the file, checked to lie within the buffer.
struct ARRAY {
    static constexpr int type_u8 = 5121, type_u16 = 5123, type_u32 = 5125, type_f32 = 5126;

    unsigned char const *first = nullptr;
    std::size_t stride = 0;
    std::size_t count = 0;
    int component = 0;
};

// The array whose accessor is `owner`'s member `name`.
bool find_array(FILE_PARTS const &parts, JSON const &owner, char const *name, int components, ARRAY &out);
// Of triangles: appended to `to` as numbers from `base` on. False unless all are below `vertex_count` and the count is
// one of whole triangles.
bool append_indices(ARRAY const &array, std::size_t base, std::size_t vertex_count, std::vector<std::uint32_t> &to);

// The member as a whole number; `otherwise` if it is absent; false if it is no whole number of at most 32 bits.
bool number(JSON const &object, char const *name, std::uint64_t otherwise, std::uint64_t &out);
// Element `index` of the list `name`, or null.
JSON const *element(JSON const &object, char const *name, std::uint64_t index);
// True for a node that does not stand where the model does.
bool is_placed(JSON const &node);
// The member as a text; empty if it is none.
std::string text(JSON const &object, char const *name);

}  // namespace GLTF
