#include "platform/conversion/mesh_source.h"

#include "Plugins/Vx2/host/vex2_filter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace VEX2_LOADER;

namespace TOOLDATABUILDER {

namespace {

VEX2_MATRIX placing_matrix(VEX2 const &scene, VEX2_MESH const &mesh)
{
    bool const has_node = mesh.matrix_index < scene.hierarchy.nodes.count;
    return has_node ? scene.hierarchy.nodes[mesh.matrix_index].matrix : VEX2_MATRIX();
}

VEX2_VECTOR rotated(float const *x, float const *y, float const *z, VEX2_VECTOR const &v)
{
    return {x[0] * v.x + x[1] * v.y + x[2] * v.z, y[0] * v.x + y[1] * v.y + y[2] * v.z,
            z[0] * v.x + z[1] * v.y + z[2] * v.z};
}

VEX2_VERTEX current_pose(VEX2_ANIMATED_VERTEX const &animated)
{
    VEX2_VERTEX vertex;
    animated.get_position(vertex.position);
    animated.get_normal(vertex.normal);
    animated.get_colour(vertex.colour);
    vertex.uvws.resize(animated.uvw_count());
    for (std::uint32_t i = 0; i < vertex.uvws.count; ++i)
        animated.get_uvw(i, vertex.uvws[i]);
    vertex.frames.resize(animated.frame_count());
    for (std::uint32_t i = 0; i < vertex.frames.count; ++i)
        animated.get_frame(i, vertex.frames[i]);
    return vertex;
}

template <class LIST>
void append_filtered(LIST const &list, VEX2_FILTER const &filter, std::vector<VEX2_MESH const *> &taken)
{
    for (auto const *const mesh : list)
        if (mesh != nullptr && filter.mesh(*mesh))
            taken.push_back(mesh);
}

}  // namespace

PLACEMENT::PLACEMENT(VEX2_MATRIX const &from) : matrix(from)
{
    VEX2_MATRIX const identity;
    is_identity = std::memcmp(&matrix, &identity, sizeof(matrix)) == 0;
    float size = 0;
    for (unsigned i = 0; i < 9; ++i)
        size = std::max(size, std::abs(matrix[i / 3][i % 3]));
    for (unsigned i = 0; i < 9; ++i)
        direction_matrix[i / 3][i % 3] = size > 0 ? matrix[i / 3][i % 3] / size : 0;
    size = 0;
    for (unsigned r = 0; r < 3; ++r) {
        float const *const next = direction_matrix[(r + 1) % 3], *const last = direction_matrix[(r + 2) % 3];
        for (unsigned c = 0; c < 3; ++c) {
            normal_matrix[r][c] = next[(c + 1) % 3] * last[(c + 2) % 3] - next[(c + 2) % 3] * last[(c + 1) % 3];
            size = std::max(size, std::abs(normal_matrix[r][c]));
        }
    }
    float determinant = 0;
    for (unsigned c = 0; c < 3; ++c)
        determinant += direction_matrix[0][c] * normal_matrix[0][c];
    is_mirrored = determinant < 0;
    for (auto &row : normal_matrix)
        for (float &element : row)
            element = size > 0 ? (is_mirrored ? -element : element) / size : 0;
}

VEX2_VECTOR PLACEMENT::place(VEX2_VECTOR const &point) const
{
    return is_identity ? point : displace(point) + VEX2_VECTOR{matrix[0][3], matrix[1][3], matrix[2][3]};
}

VEX2_VECTOR PLACEMENT::displace(VEX2_VECTOR const &offset) const
{
    return is_identity ? offset : rotated(matrix[0], matrix[1], matrix[2], offset);
}

VEX2_VECTOR PLACEMENT::turn(VEX2_VECTOR const &direction) const
{
    return is_identity ? direction : rotated(direction_matrix[0], direction_matrix[1], direction_matrix[2], direction);
}

VEX2_VECTOR PLACEMENT::turn_normal(VEX2_VECTOR const &normal) const
{
    return is_identity ? normal : rotated(normal_matrix[0], normal_matrix[1], normal_matrix[2], normal);
}

MESH_SOURCE::MESH_SOURCE(VEX2 const &scene, VEX2_MESH const &from)
    : mesh(from), morph(dynamic_cast<VEX2_MORPH_MESH const *>(&from)),
      weighted(dynamic_cast<VEX2_WEIGHTED_MESH const *>(&from)),
      placement(weighted ? VEX2_MATRIX() : placing_matrix(scene, from))
{
    if (from.matrix_index < scene.hierarchy.nodes.count)
        node_name = KN::to_utf8(scene.hierarchy.nodes[from.matrix_index].name);
    name = from.name.empty() ? node_name : KN::to_utf8(from.name);

    if (morph) {
        look_at(morph->vertices);
    } else if (weighted) {
        look_at(weighted->vertices);
    } else if (auto const *const plain = dynamic_cast<VEX2_STATIC_MESH const *>(&from)) {
        look_at(plain->vertices);
    } else if (auto const *const animated = dynamic_cast<VEX2_ANIMATED_MESH const *>(&from)) {
        posed.reserve(animated->vertices.count);
        for (VEX2_ANIMATED_VERTEX const &vertex : animated->vertices)
            posed.append(current_pose(vertex));
        look_at(posed);
    }
}

template <class VERTEX>
void MESH_SOURCE::look_at(KN::DynamicArray<VERTEX> const &vertices)
{
    VEX2_VERTEX const *const start = vertices.data;
    first = reinterpret_cast<unsigned char const *>(start);
    stride = sizeof(VERTEX);
    count = vertices.count;
}

bool MESH_SOURCE::append_triangles(VEX2_POLYGON_SET const &section, std::vector<std::uint32_t> &indices,
                                   KN::String &error) const
{
    std::size_t const start = indices.size();
    indices.resize(start + std::size_t(section.triangles.count) * 3);
    std::uint32_t *to = indices.data() + start;
    std::uint32_t const middle = placement.is_mirrored ? 2 : 1;
    std::uint32_t greatest = 0;
    for (VEX2_TRIANGLE const &triangle : section.triangles) {
        to[0] = triangle.vertices[0];
        to[1] = triangle.vertices[middle];
        to[2] = triangle.vertices[3 - middle];
        for (std::uint32_t const index : triangle.vertices)
            greatest = index > greatest ? index : greatest;
        to += 3;
    }
    if (section.triangles.count != 0 && greatest >= count) {
        error = "mesh '" + name + "': a triangle names vertex " + std::to_string(greatest) + ", there are " +
                std::to_string(count) + "; export the scene again";
        return false;
    }
    return true;
}

bool MESH_SOURCE::take_geometry(GLTF::GEOMETRY &to, KN::String &error) const
{
    to.name = name;
    for (VEX2_STRING_ATTRIBUTE const &attribute : mesh.attributes.strings)
        if (attribute.values.count == 1)
            to.texts.emplace(KN::to_utf8(attribute.name), KN::to_utf8(attribute.values[0]));  // the first counts
    to.positions.reserve(std::size_t(count) * 3);
    for (std::uint32_t i = 0; i < count; ++i) {
        VEX2_VECTOR position;
        mesh.vertex(i).get_position(position);
        position = placement.place(position);
        if (!std::isfinite(position.x + position.y + position.z)) {
            error = "mesh '" + name + "': the position of vertex " + std::to_string(i) + " is no finite number";
            return false;
        }
        to.positions.insert(to.positions.end(), {position.x, position.y, position.z});
    }
    for (VEX2_POLYGON_SET const &section : mesh.sections)
        if (!append_triangles(section, to.indices, error))
            return false;
    return true;
}

std::vector<VEX2_MESH const *> filtered_meshes(VEX2 const &scene, VEX2_FILTER const &filter)
{
    std::vector<VEX2_MESH const *> taken;
    append_filtered(scene.static_meshes, filter, taken);
    for (VEX2_WEIGHTED_MESH const *const mesh : scene.weighted_meshes)
        if (mesh != nullptr && filter.mesh(*mesh) && filter.weighted_mesh(*mesh))
            taken.push_back(mesh);
    append_filtered(scene.morph_meshes, filter, taken);
    append_filtered(scene.animated_meshes, filter, taken);
    return taken;
}

}  // namespace TOOLDATABUILDER
