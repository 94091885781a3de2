// Layout of a block: the bytes asked for stand behind a BLOCK_HEADER, which remembers what the C allocator gave.
//
// Counting costs no contended atomic: each thread adds to counters of its own, and a sum walks all threads' counters. A
// thread's counter may be negative (it frees what others made); only the sum means something.

#include "foundation/heap.h"

#include "foundation/messages.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace {

struct BLOCK_HEADER {
    void *base;                   // what the C allocator gave
    std::uint64_t size_and_heap;  // bytes asked for, shifted left by 3; heap in the low bits
};
static_assert(sizeof(BLOCK_HEADER) == 16 && KN::HEAP_COUNT == 8);

// Written by its thread alone, read by whoever sums: relaxed loads and stores, no read-modify-write.
struct COUNTERS {
    std::array<std::atomic<std::int64_t>, KN::HEAP_COUNT> bytes{};
    COUNTERS *next = nullptr;

    void add(int heap, std::int64_t change)
    {
        auto &counter = bytes[std::size_t(heap)];
        counter.store(counter.load(std::memory_order_relaxed) + change, std::memory_order_relaxed);
    }
};

// The threads that live, and what those that ended have left. Neither is ever destroyed: blocks are freed until the
// very end of the process.
std::mutex registry_lock;
COUNTERS *living = nullptr;
COUNTERS departed;

// Trivial, so that a use during the thread's end still finds it: `closed` then says that the counters are gone.
thread_local COUNTERS *own = nullptr;
thread_local bool closed = false;

// Folds the thread's counters into `departed` when the thread ends.
struct DEPARTURE {
    COUNTERS counters;
    DEPARTURE()
    {
        std::lock_guard guard(registry_lock);
        counters.next = living;
        living = &counters;
    }
    ~DEPARTURE()
    {
        std::lock_guard guard(registry_lock);
        for (int heap = 0; heap < KN::HEAP_COUNT; ++heap)
            departed.add(heap, counters.bytes[std::size_t(heap)].load(std::memory_order_relaxed));
        COUNTERS **link = &living;
        while (*link != &counters)
            link = &(*link)->next;
        *link = counters.next;
        own = nullptr;
        closed = true;
    }
};

void count(int heap, std::int64_t change)
{
    if (own == nullptr) [[unlikely]] {
        if (closed) {
            std::lock_guard guard(registry_lock);
            departed.add(heap, change);
            return;
        }
        thread_local DEPARTURE departure;
        own = &departure.counters;
    }
    own->add(heap, change);
}

[[noreturn]] void out_of_memory(std::size_t size)
{
    std::fprintf(stderr, "out of memory: a block of %zu bytes is not to be had\n", size);
    std::abort();
}

// The header ends where the block begins, whatever the block's alignment.
BLOCK_HEADER *header_of(void *block) { return static_cast<BLOCK_HEADER *>(block) - 1; }

void *finish(void *base, unsigned char *block, std::size_t size, int heap)
{
    *header_of(block) = {base, std::uint64_t(size) << 3 | unsigned(heap)};
    count(heap, std::int64_t(size));
    return block;
}

// A large block in whole large pages: filling it then costs the system a few page faults and not thousands, which would
// take longer than the filling itself.
constexpr std::size_t large_page = 2 << 20, large_block = 2 * large_page;

void *allocate_base(std::size_t size)
{
#ifdef __linux__
    if (size >= large_block) {
        std::size_t const whole = (size + large_page - 1) & ~(large_page - 1);
        void *const base = std::aligned_alloc(large_page, whole);
        if (base != nullptr)
            madvise(base, whole, MADV_HUGEPAGE);  // a hint: what it says does not matter
        return base;
    }
#endif
    return std::malloc(size);
}

void *allocate(std::size_t size, int heap)
{
    void *const base = size < SIZE_MAX / 16 ? allocate_base(size + sizeof(BLOCK_HEADER)) : nullptr;
    if (base == nullptr)
        return nullptr;
    return finish(base, static_cast<unsigned char *>(base) + sizeof(BLOCK_HEADER), size, heap);
}

void *allocate_aligned(std::size_t size, std::size_t alignment)
{
    if (alignment <= 16)
        return allocate(size, KN::HEAP_GENERAL);
    void *const base = size < SIZE_MAX / 16 ? allocate_base(size + alignment + sizeof(BLOCK_HEADER)) : nullptr;
    if (base == nullptr)
        return nullptr;
    std::uintptr_t const least = reinterpret_cast<std::uintptr_t>(base) + sizeof(BLOCK_HEADER);
    std::uintptr_t const place = (least + alignment - 1) & ~std::uintptr_t(alignment - 1);
    return finish(base, reinterpret_cast<unsigned char *>(place), size, KN::HEAP_GENERAL);
}

}  // namespace

namespace KN {

void *custom_malloc(std::size_t size, int heap)
{
    void *const block = allocate(size, heap);
    if (block == nullptr)
        out_of_memory(size);
    return block;
}

void *malloc_aligned(std::size_t size, std::size_t alignment)
{
    void *const block = try_malloc(size, alignment);
    if (block == nullptr)
        out_of_memory(size);
    return block;
}

void *try_malloc(std::size_t size, std::size_t alignment) { return allocate_aligned(size, alignment); }

void custom_free(void *block)
{
    if (block == nullptr)
        return;
    BLOCK_HEADER const header = *header_of(block);
    count(int(header.size_and_heap & 7), -std::int64_t(header.size_and_heap >> 3));
    std::free(header.base);
}

std::int64_t MEMORY_TRACKING::current_alloc_size(int heap)
{
    std::lock_guard guard(registry_lock);
    std::int64_t sum = departed.bytes[std::size_t(heap)].load(std::memory_order_relaxed);
    for (COUNTERS const *thread = living; thread != nullptr; thread = thread->next)
        sum += thread->bytes[std::size_t(heap)].load(std::memory_order_relaxed);
    return sum;
}

void MEMORY_TRACKING::report_size(char const *text)
{
    String const head = *text != 0 ? String(text) + ": heap " : String("heap ");
    for (int heap = 0; heap < HEAP_COUNT; ++heap)
        if (std::int64_t const size = current_alloc_size(heap); size != 0)
            message_txt(head + std::to_string(heap) + ": " + std::to_string(size) + " bytes");
}

}  // namespace KN

#if !defined(HOUSE_SANITIZED)

// The process's operators: all blocks of new stand on heap 0. They throw as the language asks.

namespace {

void *new_block(std::size_t size, std::size_t alignment)
{
    for (;;) {
        if (void *const block = allocate_aligned(size, alignment))
            return block;
        std::new_handler const handler = std::get_new_handler();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

void *new_block_or_null(std::size_t size, std::size_t alignment) noexcept
{
    try {
        return new_block(size, alignment);
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

}  // namespace

// clang-format off
FOUNDATION_API void *operator new(std::size_t size) { return new_block(size, 16); }
FOUNDATION_API void *operator new[](std::size_t size) { return new_block(size, 16); }
FOUNDATION_API void *operator new(std::size_t size, std::nothrow_t const &) noexcept { return new_block_or_null(size, 16); }
FOUNDATION_API void *operator new[](std::size_t size, std::nothrow_t const &) noexcept { return new_block_or_null(size, 16); }
FOUNDATION_API void *operator new(std::size_t size, std::align_val_t alignment) { return new_block(size, std::size_t(alignment)); }
FOUNDATION_API void *operator new[](std::size_t size, std::align_val_t alignment) { return new_block(size, std::size_t(alignment)); }
FOUNDATION_API void *operator new(std::size_t size, std::align_val_t alignment, std::nothrow_t const &) noexcept { return new_block_or_null(size, std::size_t(alignment)); }
FOUNDATION_API void *operator new[](std::size_t size, std::align_val_t alignment, std::nothrow_t const &) noexcept { return new_block_or_null(size, std::size_t(alignment)); }
FOUNDATION_API void operator delete(void *block) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete[](void *block) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete(void *block, std::size_t) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete[](void *block, std::size_t) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete(void *block, std::nothrow_t const &) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete[](void *block, std::nothrow_t const &) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete(void *block, std::align_val_t) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete[](void *block, std::align_val_t) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete(void *block, std::size_t, std::align_val_t) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete[](void *block, std::size_t, std::align_val_t) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete(void *block, std::align_val_t, std::nothrow_t const &) noexcept { KN::custom_free(block); }
FOUNDATION_API void operator delete[](void *block, std::align_val_t, std::nothrow_t const &) noexcept { KN::custom_free(block); }
// clang-format on

#endif
