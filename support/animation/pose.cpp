#include "support/animation/pose.h"

#include "foundation/heap.h"

#include <utility>

namespace SUPPORT {

POSE::POSE(POSE &&other) noexcept
    : skeleton(std::exchange(other.skeleton, {})), bone_count(std::exchange(other.bone_count, 0)),
      from_scratch(other.from_scratch), translations(std::exchange(other.translations, nullptr)),
      rotations(std::exchange(other.rotations, nullptr))
{}

POSE &POSE::operator=(POSE &&other) noexcept
{
    std::swap(skeleton, other.skeleton);
    std::swap(bone_count, other.bone_count);
    std::swap(from_scratch, other.from_scratch);
    std::swap(translations, other.translations);
    std::swap(rotations, other.rotations);
    return *this;
}

POSE::~POSE() { free_arrays(); }

void POSE::make_arrays(BONE_TABLE table, SCRATCH_ALLOCATOR *scratch)
{
    free_arrays();
    skeleton = table;
    bone_count = std::uint32_t(table.size());
    from_scratch = scratch != nullptr;
    std::size_t const for_translations = table.size() * sizeof(VECTOR3);
    std::size_t const for_rotations = table.size() * sizeof(QUATERNION);
    if (from_scratch) {
        translations = static_cast<VECTOR3 *>(scratch->allocate(for_translations, alignof(VECTOR3)));
        rotations = static_cast<QUATERNION *>(scratch->allocate(for_rotations, alignof(QUATERNION)));
    } else {
        translations = static_cast<VECTOR3 *>(KN::malloc_aligned(for_translations, 16));
        rotations = static_cast<QUATERNION *>(KN::malloc_aligned(for_rotations, 16));
    }
}

void POSE::free_arrays()
{
    if (from_scratch)
        return;
    KN::custom_free(translations);
    KN::custom_free(rotations);
}

}  // namespace SUPPORT
