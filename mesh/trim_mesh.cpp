#include "mesh/trim_mesh.h"

namespace VEX2_LOADER {

static bool names_no_vertex(VEX2_TRIANGLE const &triangle, std::uint32_t vertex_count)
{
    return triangle.vertices[0] >= vertex_count || triangle.vertices[1] >= vertex_count ||
           triangle.vertices[2] >= vertex_count;
}

static bool same_place(VEX2_VECTOR const &a, VEX2_VECTOR const &b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

bool is_degenerate(VEX2_TRIANGLE const &triangle, KN::DynamicArray<VEX2_VECTOR> const &positions)
{
    auto const [a, b, c] = triangle.vertices;
    if (names_no_vertex(triangle, positions.count) || a == b || b == c || c == a)
        return true;
    return same_place(positions[a], positions[b]) || same_place(positions[b], positions[c]) ||
           same_place(positions[c], positions[a]);
}

void remove_degenerate_triangles(POLYGON_SETS &sections, KN::DynamicArray<VEX2_VECTOR> const &positions,
                                 bool keep_degenerate_sections)
{
    for (VEX2_POLYGON_SET &section : sections) {
        if (section.triangles.empty())
            continue;
        bool const keep = keep_degenerate_sections && is_degenerate(section.triangles[0], positions);
        unsigned kept = 0;
        for (VEX2_TRIANGLE const &triangle : section.triangles) {
            bool const drop = keep ? names_no_vertex(triangle, positions.count) : is_degenerate(triangle, positions);
            if (!drop)
                section.triangles[kept++] = triangle;
        }
        section.triangles.resize(kept);
    }
}

KN::DynamicArray<POLYGON_SETS *> triangles_of(VEX2_MESH &mesh, std::uint32_t mesh_index,
                                              VEX2_LIST<VEX2_ATTACHMENT> &attachments)
{
    KN::DynamicArray<POLYGON_SETS *> users;
    users.append(&mesh.sections);
    for (VEX2_ATTACHMENT *attachment : attachments)
        if (attachment != nullptr && attachment->subtype() == VEX2_POLYGON_ATTACHMENT::kind &&
            attachment->index == mesh_index)
            users.append(&static_cast<VEX2_POLYGON_ATTACHMENT *>(attachment)->sections);
    return users;
}

KN::DynamicArray<std::uint32_t> number_used_vertices(KN::DynamicArray<POLYGON_SETS *> const &users,
                                                     std::uint32_t vertex_count, std::uint32_t &used_count)
{
    KN::DynamicArray<std::uint32_t> remap;
    remap.reserve(vertex_count);
    for (std::uint32_t i = 0; i < vertex_count; ++i)
        remap.append(unused_vertex);
    for (POLYGON_SETS const *sections : users)
        for (VEX2_POLYGON_SET const &section : *sections)
            for (VEX2_TRIANGLE const &triangle : section.triangles)
                for (std::uint32_t const corner : triangle.vertices)
                    if (corner < vertex_count)
                        remap[corner] = 0;
    used_count = 0;
    for (std::uint32_t &number : remap)
        if (number != unused_vertex)
            number = used_count++;
    return remap;
}

void renumber(POLYGON_SETS &sections, KN::DynamicArray<std::uint32_t> const &remap)
{
    for (VEX2_POLYGON_SET &section : sections)
        for (VEX2_TRIANGLE &triangle : section.triangles)
            for (std::uint32_t &corner : triangle.vertices)
                if (corner < remap.count)
                    corner = remap[corner];
}

}  // namespace VEX2_LOADER
