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

// A row of the product of two matrices, from that row of the first and all rows of the second.
KERNEL void product_row(FOUR_FLOATS const &a, FOUR_FLOATS const (&b)[3], FOUR_FLOATS &row)
{
    FOUR_FLOATS const translation = __builtin_shufflevector(a, FOUR_FLOATS{}, 4, 5, 6, 3);
    row = (__builtin_shufflevector(a, a, 0, 0, 0, 0) * b[0] + __builtin_shufflevector(a, a, 1, 1, 1, 1) * b[1]) +
          (__builtin_shufflevector(a, a, 2, 2, 2, 2) * b[2] + translation);
}

KERNEL void load_rows(MATRIX34 const &from, FOUR_FLOATS (&rows)[3])
{
    for (unsigned i = 0; i < 3; ++i)
        load_lanes(rows[i], from[i]);
}

template <bool EIGHT>
KERNEL void fill(POSE const &pose, std::size_t count, MATRIX34 const &root_matrix, MATRIX34 *world)
{
    std::size_t bone = EIGHT ? local_groups<EIGHT_FLOATS>(pose, 0, count, world) : 0;
    bone = local_groups<FOUR_FLOATS>(pose, bone, count, world);
    for (; bone < count; ++bone)
        world[bone] = local_matrix(pose.rotations[bone], pose.translations[bone]);

    // Most bones hang on the one before them, whose matrix is still at hand.
    FOUR_FLOATS last[3];
    load_rows(root_matrix, last);
    std::size_t last_bone = count;
    for (bone = 0; bone < count; ++bone) {
        // A parent that is not in front of its bone, in damaged data, counts as none.
        std::size_t const parent = std::size_t(std::ptrdiff_t(pose.skeleton[bone].parent));
        if (parent != last_bone)
            load_rows(parent < bone ? world[parent] : root_matrix, last);
        FOUR_FLOATS local[3];
        load_rows(world[bone], local);
        for (unsigned i = 0; i < 3; ++i) {
            product_row(last[i], local, last[i]);
            store_lanes(last[i], world[bone][i]);
        }
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
