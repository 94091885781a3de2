// SCRATCH_ALLOCATOR: memory for poses that are built every frame and thrown away together. Blocks are handed out one
// behind the other and need no freeing one by one; `reset` takes them all back at once. After a few frames everything
// comes out of one piece of memory and no heap is called. One thread at a time.
#pragma once

#include "foundation/dynamic_array.h"

namespace SUPPORT {

class SCRATCH_ALLOCATOR {
public:
    explicit SCRATCH_ALLOCATOR(std::size_t first_size = 65536) : piece_size(first_size) {}
    SCRATCH_ALLOCATOR(SCRATCH_ALLOCATOR const &) = delete;
    SCRATCH_ALLOCATOR &operator=(SCRATCH_ALLOCATOR const &) = delete;
    ~SCRATCH_ALLOCATOR();

    // Contents undefined. `alignment`: a power of two, 16 at most.
    void *allocate(std::size_t size, std::size_t alignment);
    // Everything handed out so far is invalid from now on.
    void reset();

private:
    KN::DynamicArray<unsigned char *> pieces;  // blocks come from the last one
    std::size_t piece_size;                    // of the last one, and of the first before it is made
    std::size_t used = 0;                      // of the last one
};

}  // namespace SUPPORT
