// Fewer triangles over the same vertices, for coarser levels of detail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TOOLDATABUILDER {

struct SIMPLIFIED_VERTICES {
    std::size_t count;
    float const *positions;  // three a vertex
    float const *normals;    // three a vertex, unit length
    float const *uvs;        // two a vertex; null: none
};

// About `wanted` of the corners in `indices`, three a triangle, or more where nothing further can go. What changes the
// shape least goes first. Hard edges do not hold the surface together; each corner takes that vertex of its place which
// suits its triangle best.
std::vector<std::uint32_t> simplified(std::vector<std::uint32_t> const &indices, std::size_t wanted,
                                      SIMPLIFIED_VERTICES const &vertices);

}  // namespace TOOLDATABUILDER
