// The one allocator of the system. Every block carries a small header, so that one custom_free serves all forms, and
// counts towards one of eight heaps. The foundation's shared library also provides the process's operator new and
// delete, on heap 0 (not in sanitizer builds, where the sanitizer's own stand).
//
// Thread rules: every call may be made from any thread; a block may be freed on another thread than it was made on.
// Out of memory: the process ends with a line on standard error; only try_malloc returns null.
#pragma once

#include "foundation/api.h"

#include <cstddef>
#include <cstdint>

namespace KN {

enum HEAP : int { HEAP_GENERAL = 0, HEAP_ANIMATION = 3, HEAP_COUNT = 8 };

// A block of `size` bytes, 16-byte aligned, contents undefined. `heap` is 0 to 7. A size of 0 gives a valid block.
FOUNDATION_API void *custom_malloc(std::size_t size, int heap);

// The same on heap 0, aligned to `alignment`: a power of two.
FOUNDATION_API void *malloc_aligned(std::size_t size, std::size_t alignment);

// The same for what a file asks for: null where the memory cannot be had.
FOUNDATION_API void *try_malloc(std::size_t size, std::size_t alignment);

// Takes back a block of any of these calls; null is allowed.
FOUNDATION_API void custom_free(void *block);

namespace MEMORY_TRACKING {

// The bytes asked for and not yet freed on `heap`: exact while no other thread allocates.
FOUNDATION_API std::int64_t current_alloc_size(int heap);

// One message_txt line a heap in use: "TEXT: heap N: B bytes", without the text and its colon if it is empty.
FOUNDATION_API void report_size(char const *text);

}  // namespace MEMORY_TRACKING

}  // namespace KN
