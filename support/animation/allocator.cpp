#include "support/animation/allocator.h"

#include "foundation/heap.h"

#include <cassert>

namespace SUPPORT {

namespace {

class ANIMATION_HEAP final : public ALLOCATOR {
public:
    void *allocate(std::size_t size, [[maybe_unused]] std::size_t alignment) override
    {
        assert(alignment <= 16);  // what every block of the heap has
        return KN::custom_malloc(size, KN::HEAP_ANIMATION);
    }
    void free(void *block) override { KN::custom_free(block); }
};

}  // namespace

ALLOCATOR &animation_heap()
{
    static ANIMATION_HEAP heap;
    return heap;
}

}  // namespace SUPPORT
