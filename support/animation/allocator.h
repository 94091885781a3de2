// Where skeletons and clips take their memory from: ALLOCATOR, an interface that a caller can implement over a pool of
// its own, and ALLOCATED_ARRAY, an array of fixed size that lives in such memory. Whoever made an object keeps its
// allocator alive for as long as the object lives.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <utility>

namespace SUPPORT {

class ALLOCATOR {
public:
    // Never null. `alignment`: a power of two, 16 at most.
    virtual void *allocate(std::size_t size, std::size_t alignment) = 0;
    virtual void free(void *block) = 0;

protected:
    ~ALLOCATOR() = default;
};

// Heap 3 of the foundation. Any thread may use it.
ALLOCATOR &animation_heap();

template <class T>
class ALLOCATED_ARRAY {
public:
    ALLOCATED_ARRAY() = default;
    // `number` value-initialised elements.
    ALLOCATED_ARRAY(ALLOCATOR &allocator, std::size_t number) : home(&allocator)
    {
        if (number == 0)
            return;
        T *const place = static_cast<T *>(home->allocate(number * sizeof(T), alignof(T)));
        std::uninitialized_value_construct_n(place, number);
        elements = {place, number};
    }
    ALLOCATED_ARRAY(ALLOCATED_ARRAY &&other) noexcept : home(other.home), elements(std::exchange(other.elements, {})) {}
    ALLOCATED_ARRAY &operator=(ALLOCATED_ARRAY &&other) noexcept
    {
        std::swap(home, other.home);
        std::swap(elements, other.elements);
        return *this;
    }
    ~ALLOCATED_ARRAY()
    {
        if (elements.empty())
            return;
        std::destroy(elements.begin(), elements.end());
        home->free(elements.data());
    }

    std::size_t size() const { return elements.size(); }
    bool empty() const { return elements.empty(); }
    T *data() { return elements.data(); }
    T const *data() const { return elements.data(); }
    T &operator[](std::size_t index) { return elements[index]; }
    T const &operator[](std::size_t index) const { return elements[index]; }
    T *begin() { return elements.data(); }
    T *end() { return elements.data() + elements.size(); }
    T const *begin() const { return elements.data(); }
    T const *end() const { return elements.data() + elements.size(); }

private:
    ALLOCATOR *home = nullptr;
    std::span<T> elements;
};

}  // namespace SUPPORT
