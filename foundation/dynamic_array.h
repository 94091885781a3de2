// KN::DynamicArray: the growable array of records. Pointer, count and capacity stand open, because scene consumers
// walk them directly. Growing doubles the capacity from 8 on and moves the elements (one copy if they are trivially
// copyable), so pointers into the array do not survive it.
//
// Borrowed storage: an array may also stand on elements that somebody else owns (`borrow`; capacity is then 0). Meshes
// use it to keep the small arrays of their vertices in a few large blocks. Such an array reads and writes like any
// other, moves with its owner's blocks, is never freed, and becomes an owning one when it is copied or has to grow.
#pragma once

#include "foundation/heap.h"

#include <cassert>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace KN {

template <class T>
class DynamicArray {
public:
    T *data = nullptr;
    unsigned count = 0;
    unsigned capacity = 0;  // 0 with data set: the elements are borrowed

    DynamicArray() = default;
    DynamicArray(DynamicArray const &other) { append_copies(other.data, other.count); }
    DynamicArray(DynamicArray &&other) noexcept : data(other.data), count(other.count), capacity(other.capacity)
    {
        other.forget();
    }
    DynamicArray &operator=(DynamicArray const &other)
    {
        if (this != &other) {
            DynamicArray copy(other);
            swap(copy);
        }
        return *this;
    }
    DynamicArray &operator=(DynamicArray &&other) noexcept
    {
        if (this != &other) {
            release();
            data = other.data;
            count = other.count;
            capacity = other.capacity;
            other.forget();
        }
        return *this;
    }
    ~DynamicArray() { release(); }

    void swap(DynamicArray &other) noexcept
    {
        std::swap(data, other.data);
        std::swap(count, other.count);
        std::swap(capacity, other.capacity);
    }

    T *begin() { return data; }
    T *end() { return data + count; }
    T const *begin() const { return data; }
    T const *end() const { return data + count; }
    bool empty() const { return count == 0; }
    unsigned size() const { return count; }
    T &operator[](std::size_t index)
    {
        assert(index < count);
        return data[index];
    }
    T const &operator[](std::size_t index) const
    {
        assert(index < count);
        return data[index];
    }
    T &back() { return (*this)[count - 1]; }
    T const &back() const { return (*this)[count - 1]; }

    // The appended element is the value made from `arguments`, which may refer into this array.
    template <class... ARGUMENTS>
    T &append(ARGUMENTS &&...arguments)
    {
        if (count < capacity)
            return *new (data + count++) T(std::forward<ARGUMENTS>(arguments)...);
        T made(std::forward<ARGUMENTS>(arguments)...);
        grow(count < 4 ? 8 : count * 2);
        return *new (data + count++) T(std::move(made));
    }

    void reserve(unsigned wanted)
    {
        if (wanted > capacity && wanted > count)
            grow(wanted);
    }

    // The same for what a file asks for: false, with the array as it was, where the memory cannot be had.
    bool try_reserve(unsigned wanted)
    {
        if (wanted <= capacity || wanted <= count)
            return true;
        T *const room = static_cast<T *>(try_malloc(std::size_t(wanted) * sizeof(T), alignof(T)));
        if (room == nullptr)
            return false;
        move_to(room, wanted);
        return true;
    }

    // New elements are value-initialised.
    void resize(unsigned wanted)
    {
        if (wanted < count) {
            destroy(data + wanted, count - wanted);
        } else if (wanted > count) {
            reserve(wanted);
            for (unsigned i = count; i < wanted; ++i)
                new (data + i) T();
        }
        count = wanted;
    }

    // Replaces the elements by the `number` whose bytes stand at `bytes`, where they need no alignment.
    void assign_bytes(void const *bytes, unsigned number)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        clear();
        if (number == 0)
            return;
        data = allocate(number);
        capacity = number;
        std::memcpy(static_cast<void *>(data), bytes, std::size_t(number) * sizeof(T));
        count = number;
    }

    // Destroys the elements and gives the storage back.
    void clear()
    {
        release();
        forget();
    }

    // Stands on `elements` of another owner, who outlives this array's use of them.
    void borrow(T *elements, unsigned number)
    {
        static_assert(std::is_trivially_destructible_v<T>, "nobody destroys borrowed elements through the array");
        release();
        data = elements;
        count = number;
        capacity = 0;
    }

private:
    static void destroy(T *elements, unsigned number)
    {
        if constexpr (!std::is_trivially_destructible_v<T>)
            for (unsigned i = 0; i < number; ++i)
                elements[i].~T();
    }
    void release()
    {
        if (capacity != 0) {
            destroy(data, count);
            custom_free(data);
        }
    }
    void forget()
    {
        data = nullptr;
        count = 0;
        capacity = 0;
    }
    static T *allocate(unsigned number)
    {
        std::size_t const bytes = std::size_t(number) * sizeof(T);
        if constexpr (alignof(T) > 16)
            return static_cast<T *>(malloc_aligned(bytes, alignof(T)));
        else
            return static_cast<T *>(custom_malloc(bytes, HEAP_GENERAL));
    }
    void grow(unsigned wanted) { move_to(allocate(wanted), wanted); }
    void move_to(T *grown, unsigned wanted)
    {
        if constexpr (std::is_trivially_copyable_v<T>) {
            if (count != 0)
                std::memcpy(static_cast<void *>(grown), data, std::size_t(count) * sizeof(T));
        } else {
            for (unsigned i = 0; i < count; ++i) {
                new (grown + i) T(std::move(data[i]));
                data[i].~T();
            }
        }
        if (capacity != 0)
            custom_free(data);
        data = grown;
        capacity = wanted;
    }
    void append_copies(T const *elements, unsigned number)
    {
        if (number == 0)
            return;
        data = allocate(number);
        capacity = number;
        if constexpr (std::is_trivially_copyable_v<T>)
            std::memcpy(static_cast<void *>(data), elements, std::size_t(number) * sizeof(T));
        else
            for (unsigned i = 0; i < number; ++i)
                new (data + i) T(elements[i]);
        count = number;
    }
};

}  // namespace KN
