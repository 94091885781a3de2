// Skinned meshes. A vertex is kept in the space of each node that moves it, taken at the start pose; a seek gathers it
// back: position = sum over the influences of weight * (node matrix * local position), normal and frames likewise
// without the translation.
#include "foundation/messages.h"
#include "scene/scene.h"

#include <cmath>

namespace VEX2_LOADER {

namespace {

// Four floats that are worked on at once; each lane is rounded as a single float would be.
using LANES = float __attribute__((vector_size(16)));

LANES splat(float value) { return LANES{value, value, value, value}; }

VEX2_VECTOR to_vector(LANES const &lanes) { return {lanes[0], lanes[1], lanes[2]}; }

// A matrix by columns, as the products below want it.
struct COLUMNS {
    LANES x, y, z, translation;

    explicit COLUMNS(VEX2_MATRIX const &matrix)
    {
        LANES rows[3];
        std::memcpy(rows, matrix.m, sizeof rows);
        LANES const low_01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
        LANES const high_01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
        x = __builtin_shufflevector(low_01, rows[2], 0, 1, 4, 4);
        y = __builtin_shufflevector(low_01, rows[2], 2, 3, 5, 5);
        z = __builtin_shufflevector(high_01, rows[2], 0, 1, 6, 6);
        translation = __builtin_shufflevector(high_01, rows[2], 2, 3, 7, 7);
    }
    LANES direction(VEX2_VECTOR const &v) const { return x * splat(v.x) + y * splat(v.y) + z * splat(v.z); }
    LANES point(VEX2_VECTOR const &v) const { return direction(v) + translation; }
};

VEX2_VECTOR apply(VEX2_MATRIX const &matrix, VEX2_VECTOR const &point)
{
    return to_vector(COLUMNS(matrix).point(point));
}

// Vectors whose squared length is `shortest` or less stay as they are.
void normalise(VEX2_VECTOR &v, float shortest)
{
    float const squared = v.x * v.x + v.y * v.y + v.z * v.z;
    if (squared > shortest) {
        float const scale = 1 / std::sqrt(squared);
        v = {v.x * scale, v.y * scale, v.z * scale};
    }
}

// The inverse of an affine matrix, by cofactors. One that has none gives infinities and NaNs.
VEX2_MATRIX inverse_of(VEX2_MATRIX const &m)
{
    auto const cofactor = [&](unsigned row, unsigned column) {
        unsigned const r1 = (row + 1) % 3, r2 = (row + 2) % 3;
        unsigned const c1 = (column + 1) % 3, c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    float const determinant = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    float const scale = 1 / determinant;
    VEX2_MATRIX inverse;
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned j = 0; j < 3; ++j)
            inverse[i][j] = cofactor(j, i) * scale;
        inverse[i][3] = -(inverse[i][0] * m[0][3] + inverse[i][1] * m[1][3] + inverse[i][2] * m[2][3]);
    }
    return inverse;
}

// The transpose of the left 3x3, without translation: the inverse of a rotation.
VEX2_MATRIX rotation_inverse_of(VEX2_MATRIX const &m)
{
    VEX2_MATRIX inverse;
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j)
            inverse[i][j] = m[j][i];
    return inverse;
}

template <class FUNCTION>
KN::DynamicArray<VEX2_MATRIX> of_all_nodes(VEX2_MATRIX_HIERARCHY const &hierarchy, FUNCTION const &function)
{
    KN::DynamicArray<VEX2_MATRIX> matrices;
    matrices.reserve(hierarchy.nodes.count);
    for (VEX2_MATRIX_NODE const &node : hierarchy.nodes)
        matrices.append(function(node.matrix));
    return matrices;
}

struct POSE {
    LANES position = splat(0), normal = splat(0), binormal = splat(0), tangent = splat(0);
};

// The weighted sums over the influences; of the frames, those of number `frame` (none if the vertex has no local
// frames).
POSE gather(VEX2_WEIGHTED_VERTEX const &vertex, std::uint32_t frame, std::uint32_t frame_count,
            KN::DynamicArray<VEX2_MATRIX_NODE> const &nodes)
{
    POSE pose;
    VEX2_TANGENT_FRAME const *local_frame = vertex.local_frames.data + frame;
    for (VEX2_INFLUENCE const &influence : vertex.influences) {
        if (influence.matrix_index < nodes.count) {
            COLUMNS const matrix(nodes.data[influence.matrix_index].matrix);
            LANES const weight = splat(influence.weight);
            pose.position += weight * matrix.point(influence.local_position);
            pose.normal += weight * matrix.direction(influence.local_normal);
            if (frame_count != 0) {
                pose.binormal += weight * matrix.direction(local_frame->binormal);
                pose.tangent += weight * matrix.direction(local_frame->tangent);
            }
        }
        local_frame += frame_count;
    }
    return pose;
}

void skin_vertex(VEX2_WEIGHTED_VERTEX &vertex, KN::DynamicArray<VEX2_MATRIX_NODE> const &nodes)
{
    constexpr float shortest_frame_vector = 0.01f;  // squared
    std::uint32_t const frame_count = vertex.has_local_frames() ? vertex.frames.count : 0;
    std::uint32_t frame = 0;
    do {  // one round for a vertex without frames, too
        POSE const pose = gather(vertex, frame, frame_count, nodes);
        if (frame == 0) {
            vertex.position = to_vector(pose.position);
            vertex.normal = to_vector(pose.normal);
            normalise(vertex.normal, 0);
        }
        if (frame_count != 0) {
            VEX2_TANGENT_FRAME sum = {to_vector(pose.binormal), to_vector(pose.tangent)};
            normalise(sum.binormal, shortest_frame_vector);
            normalise(sum.tangent, shortest_frame_vector);
            vertex.frames.data[frame] = sum;
        }
    } while (++frame < frame_count);
}

}  // namespace

void VEX2_WEIGHTED_MESH::take_local_positions(KN::DynamicArray<VEX2_MATRIX> const &inverse,
                                              KN::DynamicArray<VEX2_MATRIX> const &rotation_inverse)
{
    for (VEX2_WEIGHTED_VERTEX &vertex : vertices)
        for (VEX2_INFLUENCE &influence : vertex.influences) {
            if (influence.matrix_index >= inverse.count)
                continue;
            influence.local_position = apply(inverse[influence.matrix_index], vertex.bind_position);
            influence.local_normal = apply(rotation_inverse[influence.matrix_index], vertex.bind_normal);
        }
}

std::uint64_t VEX2_WEIGHTED_MESH::local_frame_bytes() const
{
    std::uint64_t count = 0;
    for (VEX2_WEIGHTED_VERTEX const &vertex : vertices)
        count += std::uint64_t(vertex.influences.count) * vertex.frames.count;
    return count * sizeof(VEX2_TANGENT_FRAME);
}

void VEX2_WEIGHTED_MESH::take_local_frames(KN::DynamicArray<VEX2_MATRIX> const &rotation_inverse)
{
    constexpr std::uint64_t largest_block = std::uint64_t(1) << 31;
    std::uint64_t const bytes = local_frame_bytes();
    KN::Arena taken;
    if (bytes <= largest_block)
        taken.reserve(bytes);
    else
        KN::message(KN::MESSAGE_ERROR, "a weighted mesh has too many influences and frames: they are left out");
    for (VEX2_WEIGHTED_VERTEX &vertex : vertices) {
        std::uint32_t const count = bytes <= largest_block ? vertex.influences.count * vertex.frames.count : 0;
        VEX2_TANGENT_FRAME *next = taken.allocate<VEX2_TANGENT_FRAME>(count);
        vertex.local_frames.borrow(next, count);
        for (std::uint32_t i = 0; count != 0 && i < vertex.influences.count; ++i) {
            std::uint32_t const node = vertex.influences[i].matrix_index;
            VEX2_MATRIX const inverse = node < rotation_inverse.count ? rotation_inverse[node] : VEX2_MATRIX();
            COLUMNS const columns(inverse);
            for (VEX2_TANGENT_FRAME const &frame : vertex.frames)
                *next++ = {to_vector(columns.direction(frame.binormal)), to_vector(columns.direction(frame.tangent))};
        }
    }
    frame_blocks = std::move(taken);
}

void VEX2_WEIGHTED_MESH::skin(VEX2_MATRIX_HIERARCHY const &hierarchy)
{
    for (VEX2_WEIGHTED_VERTEX &vertex : vertices) {
        if (vertex.influences.empty()) {
            vertex.position = vertex.bind_position;
            vertex.normal = vertex.bind_normal;
        } else {
            skin_vertex(vertex, hierarchy.nodes);
        }
    }
}

void VEX2::prepare_weighted_meshes()
{
    if (weighted_meshes.empty())
        return;
    hierarchy.seek(info.start_time);
    auto const inverse = of_all_nodes(hierarchy, inverse_of);
    auto const rotation_inverse = of_all_nodes(hierarchy, rotation_inverse_of);
    for (VEX2_WEIGHTED_MESH *mesh : weighted_meshes)
        if (mesh) {
            mesh->take_local_positions(inverse, rotation_inverse);
            mesh->take_local_frames(rotation_inverse);
        }
}

void VEX2::refresh_weighted_frames()
{
    if (weighted_meshes.empty())
        return;
    hierarchy.seek(info.start_time);
    auto const rotation_inverse = of_all_nodes(hierarchy, rotation_inverse_of);
    for (VEX2_WEIGHTED_MESH *mesh : weighted_meshes)
        if (mesh)
            mesh->take_local_frames(rotation_inverse);
}

}  // namespace VEX2_LOADER
