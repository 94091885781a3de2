#include "foundation/heap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

namespace {

TEST(Heap, BlocksAreAlignedAndCountOnTheirHeapAcrossThreads)
{
    std::int64_t const before = KN::MEMORY_TRACKING::current_alloc_size(3);
    std::vector<void *> blocks;
    for (std::size_t size : {0u, 1u, 15u, 4096u}) {
        void *const block = KN::custom_malloc(size, 3);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
        std::memset(block, 0xee, size);
        blocks.push_back(block);
    }
    EXPECT_EQ(KN::MEMORY_TRACKING::current_alloc_size(3) - before, 4112);
    // Freed on another thread that has ended since: its negative share must not be lost.
    std::thread([&] {
        for (void *block : blocks)
            KN::custom_free(block);
    }).join();
    EXPECT_EQ(KN::MEMORY_TRACKING::current_alloc_size(3), before);
}

TEST(Heap, AlignedBlocksComeBackThroughTheSameFree)
{
    std::int64_t const before = KN::MEMORY_TRACKING::current_alloc_size(0);
    for (std::size_t alignment : {1u, 16u, 64u, 65536u}) {
        void *const block = KN::malloc_aligned(100, alignment);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u);
        std::memset(block, 0xee, 100);
        KN::custom_free(block);
    }
    EXPECT_EQ(KN::MEMORY_TRACKING::current_alloc_size(0), before);
}

#if !defined(HOUSE_SANITIZED)
// The operators of the foundation must serve the whole process, the test program and the standard library included.
TEST(Heap, OperatorNewCountsOnHeapZero)
{
    std::int64_t const before = KN::MEMORY_TRACKING::current_alloc_size(0);
    auto const bytes = std::make_unique<std::vector<char>>(100000);
    EXPECT_GE(KN::MEMORY_TRACKING::current_alloc_size(0) - before, 100000);
}
#endif

}  // namespace
