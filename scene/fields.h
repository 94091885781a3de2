// What the visitors of field descriptions share: which types are records, which stand in a file as they stand in
// memory, and the fewest bytes that a record of a version takes.
#pragma once

#include "scene/record.h"
#include "scene/values.h"

#include <bit>
#include <type_traits>

namespace VEX2_LOADER {

static_assert(std::endian::native == std::endian::little, "files are little-endian and copied as they stand");

struct FIELD_PROBE {};

template <class T>
concept RECORD = requires(FIELD_PROBE &probe)
{
    T::fields(probe);
};

// Numbers but bool, the value structures, C arrays of these, and records that say so of themselves.
template <class T>
constexpr bool stored_as_is =
    std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool> && !std::is_pointer_v<T> && !RECORD<T>;
template <class T>
requires requires { T::stored_as_is; }
constexpr bool stored_as_is<T> = T::stored_as_is;
template <class T, std::size_t N>
constexpr bool stored_as_is<T[N]> = stored_as_is<T>;

// The base of the visitors: what is stored like any other field goes to the visitor's operator(), and what the newest
// version does not store is passed over. A visitor that knows better has operations of its own.
template <class VISITOR>
class FIELD_VISITOR {
public:
    template <class C, class T>
    void as_array(char const *name, T C::*member)
    {
        static_cast<VISITOR &> (*this)(name, member);
    }
    template <class C, class T>
    void vertices(char const *name, T C::*member)
    {
        static_cast<VISITOR &> (*this)(name, member);
    }
    template <class C, class T>
    void computed(char const *, T C::*)
    {}
    template <class C>
    void stored_matrix(char const *, VEX2_MATRIX C::*)
    {}
    void obsolete_channel(float, float) {}
};

template <class T>
std::size_t least_size(float version);

class LEAST_SIZE_VISITOR : public FIELD_VISITOR<LEAST_SIZE_VISITOR> {
public:
    explicit LEAST_SIZE_VISITOR(float file_version) : version(file_version) {}

    template <class C, class T>
    void operator()(char const *, T C::*)
    {
        size += least_size<T>(version);
    }
    template <class C, class T>
    void operator()(char const *name, T C::*member, float since)
    {
        if (version >= since)
            (*this)(name, member);
    }

    std::size_t size = 0;

private:
    float version;
};

template <class T>
std::size_t least_size(float version)
{
    if constexpr (stored_as_is<T>) {
        return sizeof(T);
    } else if constexpr (std::is_array_v<T>) {
        return std::extent_v<T> * least_size<std::remove_extent_t<T>>(version);
    } else if constexpr (std::is_same_v<T, KN::UniString>) {
        return sizeof(std::uint16_t);
    } else if constexpr (RECORD<T>) {
        LEAST_SIZE_VISITOR visitor(version);
        T::fields(visitor);
        return visitor.size;
    } else {
        return sizeof(std::uint32_t);  // a bool, a count, a present flag
    }
}

}  // namespace VEX2_LOADER
