// Reading of animation files, from a file and from a stream alike: a SOURCE gives bytes, and how many of them there
// were is the only thing that is asked of it. Memory is taken in pieces, each after the one before has been filled, so
// that a count costs no more than the bytes that follow it.
#pragma once

#include "foundation/buffered_stream.h"
#include "foundation/containers.h"
#include "foundation/file.h"
#include "support/animation/allocator.h"
#include "support/animation/animation_file.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace SUPPORT {

static_assert(std::endian::native == std::endian::little, "files are little-endian and copied as they stand");

inline constexpr std::size_t read_piece = 1 << 16, largest_piece = 1 << 30;  // bytes

class FILE_SOURCE {
public:
    explicit FILE_SOURCE(KN::FileIn &given) : file(given) {}
    std::size_t read(void *target, std::size_t size) { return file.read(target, unsigned(size)); }

private:
    KN::FileIn &file;
};

class STREAM_SOURCE {
public:
    explicit STREAM_SOURCE(KN::BufferedStream &given) : stream(given) {}
    std::size_t read(void *target, std::size_t size) { return stream.read(target, unsigned(size)); }

private:
    KN::BufferedStream &stream;
};

// Fills an empty array with `count` elements whose bytes lie in the source as they do in memory. False if there are
// fewer; the array then has the whole ones. ARRAY: KN::DynamicArray or KN_STD::VECTOR.
template <class SOURCE, class ARRAY>
bool read_elements(SOURCE &source, ARRAY &array, std::size_t count)
{
    using SIZE = decltype(array.size());
    using T = std::remove_reference_t<decltype(array[0])>;
    for (std::size_t done = 0; done < count;) {
        std::size_t const wanted =
            std::min(count - done, std::clamp(done * sizeof(T), read_piece, largest_piece) / sizeof(T));
        array.resize(SIZE(done + wanted));
        std::size_t const got = source.read(&array[done], wanted * sizeof(T)) / sizeof(T);
        done += got;
        if (got < wanted) {
            array.resize(SIZE(done));
            return false;
        }
    }
    return true;
}

template <class SOURCE>
bool read_text(SOURCE &source, KN::String &text)
{
    std::uint16_t size = 0;
    if (source.read(&size, sizeof size) != sizeof size)
        return false;
    text.resize(size);
    return source.read(text.data(), size) == size;
}

// The visitor that fills a record. The first lack ends it; what was read until then stays.
template <class SOURCE, class RECORD>
class RECORD_READER {
public:
    RECORD_READER(SOURCE &given, RECORD &record) : source(given), self(record) {}

    template <class C>
    void version(std::uint32_t C::*member)
    {
        (*this)(member);
        good = good && self.*member >= first_animation_version;
    }
    template <class C, class T>
    void operator()(T C::*member)
    {
        T value{};
        good = good && source.read(&value, sizeof value) == sizeof value;
        self.*member = good ? value : T{};
    }
    template <class C>
    void operator()(KN::String C::*member)
    {
        good = good && read_text(source, self.*member);
    }
    template <class C, class T, class D>
    void array(KN::DynamicArray<T> C::*member, std::uint32_t D::*count)
    {
        good = good && read_elements(source, self.*member, self.*count);
    }
    template <class C, class D>
    void array(KN::DynamicArray<BONE_RECORD> C::*member, std::uint32_t D::*count)
    {
        for (std::uint32_t i = 0; good && i < self.*count; ++i) {
            BONE_RECORD bone;
            good = read_text(source, bone.name) && source.read(&bone.parent, sizeof bone.parent) == sizeof bone.parent;
            bone.name = bone.name.lower();
            if (good)
                (self.*member).append(std::move(bone));
        }
    }

    bool good = true;

private:
    SOURCE &source;
    RECORD &self;
};

// False if the version is too old or the source ends early.
template <class SOURCE, class RECORD>
bool read_record(SOURCE &source, RECORD &record)
{
    RECORD_READER<SOURCE, RECORD> reader(source, record);
    RECORD::fields(reader);
    return reader.good;
}

// Makes frames, one after the other, each in one block of the allocator: the frame, its translations, its rotations.
template <class SOURCE>
class FRAME_READER {
public:
    FRAME_READER(SOURCE &given, ANIMATION_FILE_TABLES const &tables, ALLOCATOR &home)
        : source(given), allocator(home), translation_count(tables.translation_count),
          rotation_count(tables.rotation_count)
    {}

    bool frames_are_empty() const { return translation_count == 0 && rotation_count == 0; }

    // Null if the source has no whole frame left. To be given back to the allocator as one block.
    ANIMATION_FRAME *read()
    {
        std::size_t const for_translations = translation_count * sizeof(VECTOR3);
        std::size_t const size = for_translations + rotation_count * sizeof(PACKED_QUATERNION);
        scratch.clear();
        if (!read_elements(source, scratch, size))
            return nullptr;
        void *const block = allocator.allocate(sizeof(ANIMATION_FRAME) + size, alignof(ANIMATION_FRAME));
        ANIMATION_FRAME *const frame = new (block) ANIMATION_FRAME;
        unsigned char *const values = static_cast<unsigned char *>(block) + sizeof(ANIMATION_FRAME);
        if (size != 0)
            std::memcpy(values, scratch.data(), size);
        frame->translations = {reinterpret_cast<VECTOR3 *>(values), translation_count};
        frame->rotations = {reinterpret_cast<PACKED_QUATERNION *>(values + for_translations), rotation_count};
        return frame;
    }

private:
    SOURCE &source;
    ALLOCATOR &allocator;
    std::size_t translation_count, rotation_count;
    KN_STD::VECTOR<unsigned char> scratch;  // of one frame; only grows
};

// Copies into memory of the allocator, names included as they are.
template <class T>
ALLOCATED_ARRAY<T> moved_to(ALLOCATOR &allocator, KN::DynamicArray<T> &&from)
{
    ALLOCATED_ARRAY<T> array(allocator, from.count);
    std::move(from.begin(), from.end(), array.begin());
    return array;
}

// What loading does to the root of a frame and to the bones without parent, by the options; see ANIMATION_OPTION.
class ROOT_HANDLING {
public:
    // For `frame` and all frames with its tables.
    ROOT_HANDLING(ANIMATION_FRAME const &frame, std::uint32_t root_bone, std::uint32_t options);

    // `reference`: the clip's first frame, for later ones; otherwise null.
    void apply(ANIMATION_FRAME &frame, ANIMATION_FRAME const *reference) const;

private:
    std::uint32_t root, flags;
    KN::DynamicArray<std::uint32_t> touched;  // bones, in the order of the table
};

}  // namespace SUPPORT
