#include "foundation/arena.h"
#include "foundation/dynamic_array.h"
#include "foundation/mem_buffer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

// Elements that own memory and know their address: a byte-wise move would be seen by both.
struct ELEMENT {
    std::unique_ptr<int> value;
    ELEMENT *self = this;
    explicit ELEMENT(int number) : value(new int(number)) {}
    ELEMENT(ELEMENT &&other) noexcept : value(std::move(other.value)) {}
};

TEST(DynamicArray, GrowsFromEightByDoublingAndMovesItsElements)
{
    KN::DynamicArray<ELEMENT> array;
    for (int i = 0; i < 33; ++i) {
        array.append(i);
        EXPECT_EQ(array.capacity, i < 8 ? 8u : i < 16 ? 16u : i < 32 ? 32u : 64u);
    }
    for (int i = 0; i < 33; ++i) {
        EXPECT_EQ(*array[i].value, i);
        EXPECT_EQ(array[i].self, &array[i]);
    }
}

// The appended element may be one of the array's own, which the growth moves away under it.
TEST(DynamicArray, AppendsAnElementOfItself)
{
    KN::DynamicArray<std::string> array;
    array.append("a text that is too long to live inside the string object");
    for (int i = 0; i < 40; ++i)
        array.append(array[0]);
    EXPECT_EQ(array[40], array[0]);
}

TEST(DynamicArray, BorrowedStorageIsNeverFreedAndIsLeftByGrowthAndCopies)
{
    KN::Arena arena;
    int *const block = arena.allocate<int>(3);
    for (int i = 0; i < 3; ++i)
        block[i] = i;
    KN::DynamicArray<int> borrowed;
    borrowed.borrow(block, 3);

    KN::DynamicArray<int> const copy = borrowed;
    EXPECT_NE(copy.data, block);
    KN::DynamicArray<int> moved = std::move(borrowed);
    EXPECT_EQ(moved.data, block);
    EXPECT_EQ(borrowed.count, 0u);
    moved.append(3);
    EXPECT_NE(moved.data, block);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(moved[i], i);
    EXPECT_EQ(copy.count, 3u);
}

TEST(Arena, AddressesStayWhenItMovesAndBlocksDoNotOverlap)
{
    KN::Arena arena;
    int *places[1000];
    for (int i = 0; i < 1000; ++i) {
        places[i] = arena.allocate<int>(unsigned(i % 7 + 1));
        for (int k = 0; k <= i % 7; ++k)
            places[i][k] = i;
    }
    KN::Arena const moved = std::move(arena);
    for (int i = 0; i < 1000; ++i)
        for (int k = 0; k <= i % 7; ++k)
            ASSERT_EQ(places[i][k], i);
}

TEST(MemBuffer, ReadsAreBoundedByTheEndAndCountsCannotOverflow)
{
    unsigned char bytes[6] = {1, 0, 0, 0, 2, 0};
    KN::MemBuffer buffer{bytes, bytes, bytes + 6};
    EXPECT_TRUE(buffer.take(3, 2));
    EXPECT_FALSE(buffer.take(4, 2));
    EXPECT_FALSE(buffer.take(0x8000000000000001ull, 2));

    std::uint32_t value = 7;
    EXPECT_TRUE(buffer.read_value(value));
    EXPECT_EQ(value, 1u);
    EXPECT_FALSE(buffer.read_value(value));
    EXPECT_EQ(value, 1u);
    EXPECT_EQ(buffer.read(&value, 4), 2u);
    EXPECT_EQ(buffer.left(), 0u);
}

}  // namespace
