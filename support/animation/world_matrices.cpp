// Local matrices are built for four bones at once, entry by entry; each is then put behind its parent's world matrix
// row by row. The bits are those of local_matrix and of the product of two MATRIX34.

#include "support/animation/clip.h"
#include "support/animation/pose.h"
#include "support/animation/skeleton.h"
#include "support/maths/quaternion_kernel.h"

#include <emmintrin.h>

namespace SUPPORT {

namespace {

// The local matrices of four bones.
void local_matrices(QUATERNION const *rotations, VECTOR3 const *translations, MATRIX34 *locals)
{
    __m128 x = _mm_loadu_ps(&rotations[0].x), y = _mm_loadu_ps(&rotations[1].x);
    __m128 z = _mm_loadu_ps(&rotations[2].x), w = _mm_loadu_ps(&rotations[3].x);
    _MM_TRANSPOSE4_PS(x, y, z, w);
    ROTATION_ENTRIES<FOUR_FLOATS> const e = rotation_entries(COMPONENTS<FOUR_FLOATS>{x, y, z, w});
    float const *const moved = &translations->x;
    for (unsigned i = 0; i < 3; ++i) {
        __m128 c0 = e.m[i][0].lanes, c1 = e.m[i][1].lanes, c2 = e.m[i][2].lanes;
        __m128 c3 = _mm_setr_ps(moved[i], moved[3 + i], moved[6 + i], moved[9 + i]);
        _MM_TRANSPOSE4_PS(c0, c1, c2, c3);
        _mm_storeu_ps(locals[0][i], c0);
        _mm_storeu_ps(locals[1][i], c1);
        _mm_storeu_ps(locals[2][i], c2);
        _mm_storeu_ps(locals[3][i], c3);
    }
}

struct ROWS {
    __m128 row0, row1, row2;
};

ROWS load(MATRIX34 const &m) { return {_mm_loadu_ps(m[0]), _mm_loadu_ps(m[1]), _mm_loadu_ps(m[2])}; }

__m128 product_row(__m128 p, ROWS const &b)
{
    __m128 const translation = _mm_castsi128_ps(_mm_setr_epi32(0, 0, 0, -1));
    __m128 const x = _mm_mul_ps(_mm_shuffle_ps(p, p, _MM_SHUFFLE(0, 0, 0, 0)), b.row0);
    __m128 const y = _mm_mul_ps(_mm_shuffle_ps(p, p, _MM_SHUFFLE(1, 1, 1, 1)), b.row1);
    __m128 const z = _mm_mul_ps(_mm_shuffle_ps(p, p, _MM_SHUFFLE(2, 2, 2, 2)), b.row2);
    return _mm_add_ps(_mm_add_ps(x, y), _mm_add_ps(z, _mm_and_ps(p, translation)));
}

}  // namespace

std::span<MATRIX34> world_matrices(POSE const &pose, std::uint32_t bone_limit, MATRIX34 const &root_matrix,
                                   SCRATCH_ALLOCATOR &scratch)
{
    std::size_t const count = bone_limit != 0 && bone_limit < pose.bone_count ? bone_limit : pose.bone_count;
    MATRIX34 *const world = static_cast<MATRIX34 *>(scratch.allocate(count * sizeof(MATRIX34), alignof(MATRIX34)));
    std::size_t bone = 0;
    for (; bone + 4 <= count; bone += 4)
        local_matrices(pose.rotations + bone, pose.translations + bone, world + bone);
    for (; bone < count; ++bone)
        world[bone] = local_matrix(pose.rotations[bone], pose.translations[bone]);
    ROWS last = load(root_matrix);
    for (bone = 0; bone < count; ++bone) {
        // A parent that is not in front of its bone, in damaged data, counts as none.
        std::size_t const parent = std::size_t(std::ptrdiff_t(pose.skeleton[bone].parent));
        if (parent != bone - 1)
            last = load(parent < bone ? world[parent] : root_matrix);
        ROWS const local = load(world[bone]);
        last = {product_row(last.row0, local), product_row(last.row1, local), product_row(last.row2, local)};
        _mm_storeu_ps(world[bone][0], last.row0);
        _mm_storeu_ps(world[bone][1], last.row1);
        _mm_storeu_ps(world[bone][2], last.row2);
    }
    return {world, count};
}

std::span<MATRIX34> world_matrices_at(ANIMATION_CLIP const &clip, float time, std::uint32_t mode,
                                      std::uint32_t bone_limit, MATRIX34 const &root_matrix, SCRATCH_ALLOCATOR &scratch)
{
    return world_matrices(pose_at(clip, time, mode, nullptr, &scratch), bone_limit, root_matrix, scratch);
}

}  // namespace SUPPORT
