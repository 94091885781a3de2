// Takes out of a mesh what has no part in its surface: degenerate triangles, and vertices that nothing refers to.
#pragma once

#include "scene/attachment.h"

namespace VEX2_LOADER {

using POLYGON_SETS = KN::DynamicArray<VEX2_POLYGON_SET>;

// Two equal indices, or two corners at exactly the same place; also a corner that names no vertex.
// `positions` has one entry a vertex.
bool is_degenerate(VEX2_TRIANGLE const &triangle, KN::DynamicArray<VEX2_VECTOR> const &positions);

// The others keep their order. With `keep_degenerate_sections` a section whose first triangle is degenerate loses only
// triangles with a corner that names no vertex.
void remove_degenerate_triangles(POLYGON_SETS &sections, KN::DynamicArray<VEX2_VECTOR> const &positions,
                                 bool keep_degenerate_sections);

// The triangles in the numbering of mesh `mesh_index` of a kind: its own, and those of its polygon attachments.
KN::DynamicArray<POLYGON_SETS *> triangles_of(VEX2_MESH &mesh, std::uint32_t mesh_index,
                                              VEX2_LIST<VEX2_ATTACHMENT> &attachments);

constexpr std::uint32_t unused_vertex = 0xffffffff;

// For each vertex its number among those that `users` name, in ascending order, or unused_vertex; `used_count` is how
// many are named. Indices beyond the vertex count are passed over.
KN::DynamicArray<std::uint32_t> number_used_vertices(KN::DynamicArray<POLYGON_SETS *> const &users,
                                                     std::uint32_t vertex_count, std::uint32_t &used_count);

// Moves every element that has a number to the place of that number; `count` have one, and they ascend.
template <class T>
void keep_numbered(KN::DynamicArray<T> &elements, KN::DynamicArray<std::uint32_t> const &remap, std::uint32_t count)
{
    for (std::uint32_t i = 0; i < remap.count; ++i)
        if (remap[i] != unused_vertex && remap[i] != i)
            elements[remap[i]] = std::move(elements[i]);
    elements.resize(count);
}

// Every index below remap.count becomes its entry; others stay.
void renumber(POLYGON_SETS &sections, KN::DynamicArray<std::uint32_t> const &remap);

}  // namespace VEX2_LOADER
