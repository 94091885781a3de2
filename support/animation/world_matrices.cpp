// First the local matrices, for several bones at once, then each is put behind its parent's world matrix. The bits are
// those of local_matrix and of the product of two MATRIX34.

#include "support/animation/clip.h"
#include "support/animation/pose.h"
#include "support/animation/pose_lanes.h"
#include "support/animation/skeleton.h"

namespace SUPPORT {

namespace {

// From bone `begin` on; gives the first bone that is left.
template <class F>
KERNEL std::size_t local_groups(POSE const &pose, std::size_t begin, std::size_t count, MATRIX34 *locals)
{
    std::size_t bone = begin;
    for (; bone + lanes_of<F> <= count; bone += lanes_of<F>) {
        COMPONENTS<F> rotations;
        load_rotations(pose.rotations + bone, rotations);
        F entries[3][3], places[3];
        rotation_entries(rotations, entries);
        load_columns(pose.translations + bone, places);
        for (unsigned row = 0; row < 3; ++row)
            store_rows(COMPONENTS<F>{entries[row][0], entries[row][1], entries[row][2], places[row]}, locals[bone][row],
                       12);
    }
    return bone;
}

// Column `column` of one or two rows of four, in all four places of its row.
template <int column>
KERNEL void spread(FOUR_FLOATS const &rows, FOUR_FLOATS &to)
{
    to = __builtin_shufflevector(rows, rows, column, column, column, column);
}
template <int column>
KERNEL void spread(EIGHT_FLOATS const &rows, EIGHT_FLOATS &to)
{
    constexpr int c = column, d = 4 + column;
    to = __builtin_shufflevector(rows, rows, c, c, c, c, d, d, d, d);
}

KERNEL void only_translation(FOUR_FLOATS const &rows, FOUR_FLOATS &to)
{
    to = __builtin_shufflevector(rows, FOUR_FLOATS{}, 4, 5, 6, 3);
}
KERNEL void only_translation(EIGHT_FLOATS const &rows, EIGHT_FLOATS &to)
{
    to = __builtin_shufflevector(rows, EIGHT_FLOATS{}, 8, 9, 10, 3, 12, 13, 14, 7);
}

// One or two rows of the first matrix of a product become those of the product; `second` has the second matrix's rows.
template <class F>
KERNEL void multiply_rows(F &rows, F const (&second)[3])
{
    F x, y, z, translation;
    spread<0>(rows, x);
    spread<1>(rows, y);
    spread<2>(rows, z);
    only_translation(rows, translation);
    rows = (x * second[0] + y * second[1]) + (z * second[2] + translation);
}

// A matrix as its rows: one by one, or the first two together.
template <bool EIGHT>
struct ROWS;

template <>
struct ROWS<false> {
    FOUR_FLOATS row[3];

    KERNEL void load(MATRIX34 const &from)
    {
        for (unsigned i = 0; i < 3; ++i)
            load_lanes(row[i], from[i]);
    }
    KERNEL void store(MATRIX34 &to) const
    {
        for (unsigned i = 0; i < 3; ++i)
            store_lanes(row[i], to[i]);
    }
    KERNEL void multiply(MATRIX34 const &by)
    {
        ROWS second;
        second.load(by);
        for (FOUR_FLOATS &one : row)
            multiply_rows(one, second.row);
    }
};

template <>
struct ROWS<true> {
    EIGHT_FLOATS row01;
    FOUR_FLOATS row2;

    KERNEL void load(MATRIX34 const &from)
    {
        load_lanes(row01, from[0]);
        load_lanes(row2, from[2]);
    }
    KERNEL void store(MATRIX34 &to) const
    {
        store_lanes(row01, to[0]);
        store_lanes(row2, to[2]);
    }
    KERNEL void multiply(MATRIX34 const &by)
    {
        ROWS<false> second;
        second.load(by);
        EIGHT_FLOATS twice[3];
        for (unsigned i = 0; i < 3; ++i)
            twice[i] = __builtin_shufflevector(second.row[i], second.row[i], 0, 1, 2, 3, 0, 1, 2, 3);
        multiply_rows(row01, twice);
        multiply_rows(row2, second.row);
    }
};

template <bool EIGHT>
KERNEL void fill(POSE const &pose, std::size_t count, MATRIX34 const &root_matrix, MATRIX34 *world)
{
    std::size_t bone = EIGHT ? local_groups<EIGHT_FLOATS>(pose, 0, count, world) : 0;
    bone = local_groups<FOUR_FLOATS>(pose, bone, count, world);
    for (; bone < count; ++bone)
        world[bone] = local_matrix(pose.rotations[bone], pose.translations[bone]);

    // Most bones hang on the one before them, whose matrix is still at hand.
    ROWS<EIGHT> last;
    last.load(root_matrix);
    std::size_t last_bone = count;
    for (bone = 0; bone < count; ++bone) {
        // A parent that is not in front of its bone, in damaged data, counts as none.
        std::size_t const parent = std::size_t(std::ptrdiff_t(pose.skeleton[bone].parent));
        if (parent != last_bone)
            last.load(parent < bone ? world[parent] : root_matrix);
        last.multiply(world[bone]);
        last.store(world[bone]);
        last_bone = bone;
    }
}

void fill_by_four(POSE const &pose, std::size_t count, MATRIX34 const &root_matrix, MATRIX34 *world)
{
    fill<false>(pose, count, root_matrix, world);
}

WITH_EIGHT_LANES void fill_by_eight(POSE const &pose, std::size_t count, MATRIX34 const &root_matrix, MATRIX34 *world)
{
    fill<true>(pose, count, root_matrix, world);
}

}  // namespace

std::span<MATRIX34> world_matrices(POSE const &pose, std::uint32_t bone_limit, MATRIX34 const &root_matrix,
                                   SCRATCH_ALLOCATOR &scratch)
{
    std::size_t const count = bone_limit != 0 && bone_limit < pose.bone_count ? bone_limit : pose.bone_count;
    MATRIX34 *const world = static_cast<MATRIX34 *>(scratch.allocate(count * sizeof(MATRIX34), 16));
    (eight_lanes() ? fill_by_eight : fill_by_four)(pose, count, root_matrix, world);
    return {world, count};
}

std::span<MATRIX34> world_matrices_at(ANIMATION_CLIP const &clip, float time, std::uint32_t mode,
                                      std::uint32_t bone_limit, MATRIX34 const &root_matrix, SCRATCH_ALLOCATOR &scratch)
{
    return world_matrices(pose_at(clip, time, mode, nullptr, &scratch), bone_limit, root_matrix, scratch);
}

}  // namespace SUPPORT
