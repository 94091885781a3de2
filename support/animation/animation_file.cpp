#include "support/animation/animation_file.h"

#include "support/animation/file_reader.h"

#include <algorithm>
#include <cassert>

namespace SUPPORT {

namespace {

void append_bytes(KN::String &bytes, void const *from, std::size_t size)
{
    bytes.append(static_cast<char const *>(from), size);
}

void append_text(KN::String &bytes, KN::String const &text)
{
    std::uint16_t const size = std::uint16_t(std::min<std::size_t>(text.size(), 0xffff));
    append_bytes(bytes, &size, sizeof size);
    append_bytes(bytes, text.data(), size);
}

// The visitor that appends the fields of a record.
template <class RECORD>
class RECORD_WRITER {
public:
    RECORD_WRITER(KN::String &target, RECORD const &record) : bytes(target), self(record) {}

    template <class C>
    void version(std::uint32_t C::*member)
    {
        (*this)(member);
    }
    template <class C, class T>
    void operator()(T C::*member)
    {
        append_bytes(bytes, &(self.*member), sizeof(T));
    }
    template <class C>
    void operator()(KN::String C::*member)
    {
        append_text(bytes, self.*member);
    }
    template <class C, class T, class D>
    void array(KN::DynamicArray<T> C::*member, [[maybe_unused]] std::uint32_t D::*count)
    {
        assert((self.*member).count == self.*count);
        if constexpr (std::is_same_v<T, BONE_RECORD>) {
            for (BONE_RECORD const &bone : self.*member) {
                append_text(bytes, bone.name);
                append_bytes(bytes, &bone.parent, sizeof bone.parent);
            }
        } else {
            append_bytes(bytes, (self.*member).data, (self.*member).count * sizeof(T));
        }
    }

private:
    KN::String &bytes;
    RECORD const &self;
};

template <class SOURCE>
ANIMATION_FILE_HEADER header_of(SOURCE source)
{
    ANIMATION_FILE_HEADER header;
    read_record(source, header);
    return header;
}

}  // namespace

ANIMATION_FILE_HEADER read_header(KN::FileIn &file) { return header_of(FILE_SOURCE(file)); }
ANIMATION_FILE_HEADER read_header(KN::BufferedStream &stream) { return header_of(STREAM_SOURCE(stream)); }

KN::String animation_file_bytes(ANIMATION_FILE_TABLES const &tables, std::span<VECTOR3 const> translations,
                                std::span<PACKED_QUATERNION const> rotations)
{
    assert(translations.size() == std::size_t(tables.frame_count) * tables.translation_count);
    assert(rotations.size() == std::size_t(tables.frame_count) * tables.rotation_count);
    KN::String bytes;
    bytes.reserve(translations.size_bytes() + rotations.size_bytes() + std::size_t(64) * (1 + tables.bones.count));
    RECORD_WRITER writer(bytes, tables);
    ANIMATION_FILE_TABLES::fields(writer);
    for (std::size_t frame = 0; frame < tables.frame_count; ++frame) {
        auto const moved = translations.subspan(frame * tables.translation_count, tables.translation_count);
        auto const turned = rotations.subspan(frame * tables.rotation_count, tables.rotation_count);
        append_bytes(bytes, moved.data(), moved.size_bytes());
        append_bytes(bytes, turned.data(), turned.size_bytes());
    }
    return bytes;
}

KN::String matrix_block_bytes(std::span<MATRIX34 const> matrices)
{
    KN::String bytes;
    bytes.reserve(8 + matrices.size_bytes());
    std::uint32_t const head[2] = {1, std::uint32_t(matrices.size())};
    append_bytes(bytes, head, sizeof head);
    for (MATRIX34 const &matrix : matrices)
        for (unsigned column = 0; column < 4; ++column)
            for (unsigned row = 0; row < 3; ++row)
                append_bytes(bytes, &matrix[row][column], sizeof(float));
    return bytes;
}

KN::String no_matrices_bytes() { return KN::String(sizeof(std::uint32_t), '\0'); }

}  // namespace SUPPORT
