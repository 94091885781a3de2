#include "support/animation/scratch_allocator.h"

#include <algorithm>
#include <cassert>

namespace SUPPORT {

SCRATCH_ALLOCATOR::~SCRATCH_ALLOCATOR()
{
    for (unsigned char *piece : pieces)
        KN::custom_free(piece);
}

void *SCRATCH_ALLOCATOR::allocate(std::size_t size, std::size_t alignment)
{
    assert(alignment <= 16);  // what the start of a piece has
    std::size_t const start = (used + alignment - 1) & ~(alignment - 1);
    if (!pieces.empty() && start <= piece_size && size <= piece_size - start) {
        used = start + size;
        return pieces.back() + start;
    }
    piece_size = std::max(size, pieces.empty() ? piece_size : 2 * piece_size);
    pieces.append(static_cast<unsigned char *>(KN::custom_malloc(piece_size, KN::HEAP_ANIMATION)));
    used = size;
    return pieces.back();
}

// The last piece is the largest, about as large as all others together; it alone stays.
void SCRATCH_ALLOCATOR::reset()
{
    used = 0;
    if (pieces.count < 2)
        return;
    for (unsigned i = 0; i + 1 < pieces.count; ++i)
        KN::custom_free(pieces[i]);
    pieces[0] = pieces.back();
    pieces.resize(1);
}

}  // namespace SUPPORT
