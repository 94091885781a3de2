// KN::Arena: memory for many small arrays that live and die together. Blocks grow with what is asked for; nothing is
// given back before the arena goes. Moving an arena leaves every address valid. Not for use by two threads at once.
#pragma once

#include "foundation/dynamic_array.h"

namespace KN {

class Arena {
public:
    Arena() = default;
    Arena(Arena &&other) noexcept
        : blocks(std::move(other.blocks)), cursor(std::exchange(other.cursor, nullptr)),
          left(std::exchange(other.left, 0)), total(std::exchange(other.total, 0)), next_size(other.next_size)
    {}
    Arena &operator=(Arena &&other) noexcept
    {
        Arena taken(std::move(other));
        blocks.swap(taken.blocks);
        std::swap(cursor, taken.cursor);
        std::swap(left, taken.left);
        std::swap(total, taken.total);
        std::swap(next_size, taken.next_size);
        return *this;
    }
    ~Arena()
    {
        for (unsigned char *block : blocks)
            custom_free(block);
    }

    // Room for `number` elements, uninitialised; they are never destroyed. Alignment up to 16.
    template <class T>
    T *allocate(std::size_t number)
    {
        static_assert(std::is_trivially_destructible_v<T> && alignof(T) <= 16);
        std::size_t const gap = -reinterpret_cast<std::uintptr_t>(cursor) & (alignof(T) - 1);
        std::size_t size = gap + number * sizeof(T);
        unsigned char *place = cursor + gap;
        if (size > left) [[unlikely]] {
            size = number * sizeof(T);
            add_block(size);
            place = cursor;
        }
        cursor += size;
        left -= size;
        return reinterpret_cast<T *>(place);
    }

    // The next block holds at least `bytes`: for a caller that knows what is coming.
    void reserve(std::size_t bytes)
    {
        if (bytes > left)
            add_block(bytes);
    }

    // Bytes that the blocks hold and that are not left.
    std::size_t used() const { return total - left; }

private:
    void add_block(std::size_t least)
    {
        std::size_t const size = least > next_size ? least : next_size;
        cursor = static_cast<unsigned char *>(custom_malloc(size, HEAP_GENERAL));
        left = size;
        total += size;
        blocks.append(cursor);
        if (next_size < (std::size_t(1) << 22))
            next_size *= 2;
    }

    DynamicArray<unsigned char *> blocks;
    unsigned char *cursor = nullptr;
    std::size_t left = 0;
    std::size_t total = 0;  // of all blocks
    std::size_t next_size = 4096;
};

}  // namespace KN
