// GLTF::BUFFER: the binary part of a glTF file, a row of typed arrays. An array is added with its type and count, then
// filled in place, so that vertex data is written once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace GLTF {

enum class COMPONENT { U8, U16, U32, F32 };
// What the array is for. VERTICES and INDICES go to the graphics card; elements of VERTICES start at multiples of four.
enum class USE { VERTICES, INDICES, OTHER };

struct ACCESSOR {
    COMPONENT component;
    int components;  // of one element: 1 to 4, or 16 for a matrix
    std::size_t count;
    USE use;
    bool normalised;     // integers stand for 0 to 1
    bool bounded;        // least and greatest values are told in the file, as positions and key times have to
    std::size_t offset;  // of the first byte
    std::size_t stride;  // bytes from one element to the next
};

class BUFFER {
public:
    static constexpr std::size_t largest = std::size_t(1) << 31;  // bytes

    // To be told once, roughly, what is coming, where that is known.
    void reserve(std::size_t more);

    // The index of a new array of zeros, or -1 once the buffer would become larger than `largest`; such a buffer stays
    // as it is, and no file is written from it. Addresses of earlier arrays become invalid unless there was room.
    int add(COMPONENT component, int components, std::size_t count, USE use, bool bounded = false,
            bool normalised = false);

    // Takes the array that was added last away again.
    void drop_last();

    // The first element of the array. T has the size of the components, or of whole elements without padding.
    template <class T>
    T *at(int accessor)
    {
        return reinterpret_cast<T *>(bytes.data() + list[std::size_t(accessor)].offset);
    }

    bool is_refused() const { return refused; }
    std::size_t size() const { return bytes.size(); }
    std::vector<ACCESSOR> const &accessors() const { return list; }
    std::vector<unsigned char> &&take_bytes() { return static_cast<std::vector<unsigned char> &&>(bytes); }
    unsigned char const *data() const { return bytes.data(); }

private:
    std::vector<unsigned char> bytes;
    std::vector<ACCESSOR> list;
    bool refused = false;
};

}  // namespace GLTF
