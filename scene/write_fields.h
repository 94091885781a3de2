// Writing: the visitor that stores a record as the newest version has it. It goes on after a failed part, so that the
// result is whether all parts were written.
#pragma once

#include "scene/fields.h"
#include "scene/writer.h"

namespace VEX2_LOADER {

template <class T>
bool write_item(VEX2_CHUNK_WRITER &writer, T const &item);

template <class T>
class RECORD_WRITER : public FIELD_VISITOR<RECORD_WRITER<T>> {
public:
    RECORD_WRITER(VEX2_CHUNK_WRITER &chunk_writer, T const &record) : writer(chunk_writer), self(record) {}

    template <class C, class M>
    void operator()(char const *, M C::*member, float = 0)
    {
        good &= write_item(writer, self.*member);
    }
    template <class C, class M>
    void vertices(char const *, M C::*)
    {
        good &= self.write_vertices(writer);
    }

    bool good = true;

private:
    VEX2_CHUNK_WRITER &writer;
    T const &self;
};

template <class T>
bool write_array(VEX2_CHUNK_WRITER &writer, KN::DynamicArray<T> const &array)
{
    bool good = write_item(writer, array.count);
    if constexpr (stored_as_is<T>) {
        if (array.count != 0)
            good &= writer.write(array.data, std::size_t(array.count) * sizeof(T));
    } else {
        for (T const &item : array)
            good &= write_item(writer, item);
    }
    return good;
}

template <class T>
bool write_optional(VEX2_CHUNK_WRITER &writer, VEX2_OWNED<T> const &item)
{
    std::uint32_t const present = item ? 1 : 0;
    bool good = write_item(writer, present);
    if (item) {
        good &= write_item(writer, item->subtype());
        good &= item->write(writer);
    }
    return good;
}

template <class T>
bool write_item(VEX2_CHUNK_WRITER &writer, T const &item)
{
    if constexpr (stored_as_is<T>) {
        return writer.write(&item, sizeof item);
    } else if constexpr (RECORD<T>) {
        RECORD_WRITER<T> visitor(writer, item);
        T::fields(visitor);
        return visitor.good;
    } else if constexpr (std::is_array_v<T>) {
        bool good = true;
        for (auto const &element : item)
            good &= write_item(writer, element);
        return good;
    } else if constexpr (std::is_same_v<T, bool>) {
        return write_item(writer, std::uint32_t(item));
    } else if constexpr (std::is_same_v<T, KN::UniString>) {
        return writer.write_string(item);
    } else if constexpr (requires { item.capacity, item.count; }) {
        return write_array(writer, item);
    } else {
        return write_optional(writer, item);
    }
}

}  // namespace VEX2_LOADER
