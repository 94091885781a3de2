// Reading: the visitor that fills a record from a buffer. Everything is bounded by the end of the buffer; a count is
// compared with the bytes left before memory is taken for it. The first fault ends the record and all around it.
//
// SOURCE is the buffer itself, or a LOCAL_SOURCE on it for loops over many small records.
#pragma once

#include "foundation/arena.h"
#include "scene/buffer.h"
#include "scene/families.h"
#include "scene/fields.h"

namespace VEX2_LOADER {

// A copy of a buffer's cursor that a loop can keep in registers: nothing here hands out its own address. The buffer's
// cursor stands still until `give_back`, so records that read themselves from the buffer have no place in such a loop.
class LOCAL_SOURCE : public KN::MemBuffer {
public:
    explicit LOCAL_SOURCE(VEX2_READ_BUFFER &source) : KN::MemBuffer(source), buffer(source) {}

    void give_back() { buffer.cursor = cursor; }
    bool fail_here(KN::String const &what) { return give_back(), buffer.fail_here(what); }
    bool fail_short(std::uint64_t wanted) { return give_back(), buffer.fail_short(wanted); }
    bool fail_count(std::uint32_t count) { return give_back(), buffer.fail_count(count); }
    bool charge(std::uint64_t bytes) { return buffer.charge(bytes) || (give_back(), false); }
    void add_place(char const *where) { buffer.add_place(where); }
    void add_index(std::uint32_t index) { buffer.add_index(index); }

private:
    VEX2_READ_BUFFER &buffer;
};

template <class SOURCE>
struct READ_STATE {
    SOURCE &buffer;
    float version;
    KN::Arena *blocks = nullptr;  // where small arrays go; null: each has a block of its own
};

template <class SOURCE, class T>
bool read_item(READ_STATE<SOURCE> &state, T &item);

template <class SOURCE>
bool read_bytes(SOURCE &buffer, void *target, std::size_t size)
{
    if (size > buffer.left())
        return buffer.fail_short(size);
    std::memcpy(target, buffer.cursor, size);
    buffer.cursor += size;
    return true;
}

inline bool read_string(VEX2_READ_BUFFER &buffer, KN::UniString &text)
{
    std::uint16_t length = 0;
    if (!read_bytes(buffer, &length, sizeof length))
        return false;
    std::size_t const size = length * sizeof(char16_t);
    if (size > buffer.left())
        return buffer.fail_short(size);
    text.resize(length);
    if (length != 0)
        std::memcpy(text.data(), buffer.cursor, size);
    buffer.cursor += size;
    return true;
}

template <class SOURCE, class T>
bool read_elements_as_is(READ_STATE<SOURCE> &state, KN::DynamicArray<T> &array, std::uint32_t count)
{
    std::size_t const size = std::size_t(count) * sizeof(T);
    if (state.blocks) {
        T *const place = state.blocks->template allocate<T>(count);
        if (count == 1)  // the usual number, worth a copy of fixed size
            std::memcpy(static_cast<void *>(place), state.buffer.cursor, sizeof(T));
        else
            std::memcpy(static_cast<void *>(place), state.buffer.cursor, size);
        array.borrow(place, count);
    } else {
        array.assign_bytes(state.buffer.cursor, count);
    }
    state.buffer.cursor += size;
    return true;
}

template <class SOURCE, class T>
bool read_array(READ_STATE<SOURCE> &state, KN::DynamicArray<T> &array)
{
    SOURCE &buffer = state.buffer;
    array.clear();
    std::uint32_t count = 0;
    if (!read_bytes(buffer, &count, sizeof count))
        return false;
    if (count == 0)
        return true;
    if (std::uint64_t(count) * least_size<T>(state.version) > buffer.left())  // a u32 times a few bytes
        return buffer.fail_count(count);
    if constexpr (stored_as_is<T>) {
        return read_elements_as_is(state, array, count);
    } else {
        if (!buffer.charge(std::uint64_t(count) * sizeof(T)))
            return false;
        if constexpr (std::is_trivially_destructible_v<T>) {
            if (state.blocks) {
                T *const place = state.blocks->template allocate<T>(count);
                for (std::uint32_t i = 0; i < count; ++i)
                    new (place + i) T();
                array.borrow(place, count);
            }
        }
        if (array.count == 0)
            array.reserve(count);
        bool const is_first = state.blocks && state.blocks->used() == 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            T &item = i < array.count ? array[i] : array.append();
            if (!read_item(state, item)) {
                buffer.add_index(i);
                return false;
            }
            if (i == 0 && is_first)  // the others are mostly like it, and hold no more than is left to read
                state.blocks->reserve(std::min<std::uint64_t>(buffer.left(), state.blocks->used() * (count - 1)));
        }
        return true;
    }
}

// One record of the class that `subtype` names within BASE's family; null, with a fault, if it names none.
template <class BASE>
BASE *make_record(VEX2_READ_BUFFER &buffer, std::uint32_t subtype)
{
    constexpr std::size_t block_head = 32;
    std::size_t room = 0;
    BASE *const made = make_of_subtype<BASE>(subtype, room);
    if (!made)
        buffer.fail_here("subtype " + std::to_string(subtype) + " is not one that stands here");
    else if (!buffer.charge(room + block_head))
        return delete made, nullptr;
    return made;
}

template <class T>
bool read_optional(READ_STATE<VEX2_READ_BUFFER> &state, VEX2_OWNED<T> &item)
{
    item = nullptr;
    std::uint32_t present = 0;
    std::uint32_t subtype = 0;
    if (!read_bytes(state.buffer, &present, sizeof present))
        return false;
    if (present == 0)
        return true;
    if (!read_bytes(state.buffer, &subtype, sizeof subtype))
        return false;
    item = make_record<T>(state.buffer, subtype);
    if (!item)
        return false;
    if constexpr (std::is_same_v<T, VEX2_MAP>) {
        if (state.buffer.map_depth == VEX2_MAP::deepest_nesting)
            return state.buffer.fail_here("maps nest deeper than " + std::to_string(VEX2_MAP::deepest_nesting));
        ++state.buffer.map_depth;
        bool const good = item->read(state.buffer, state.version);
        --state.buffer.map_depth;
        return good;
    } else {
        return item->read(state.buffer, state.version);
    }
}

template <class SOURCE, class T>
class RECORD_READER : public FIELD_VISITOR<RECORD_READER<SOURCE, T>> {
public:
    RECORD_READER(READ_STATE<SOURCE> &read_state, T &record) : state(read_state), self(record) {}

    template <class C, class M>
    void operator()(char const *name, M C::*member)
    {
        if (good && !read_item(state, self.*member))
            fail_at(name);
    }
    template <class C, class M>
    void operator()(char const *name, M C::*member, float since)
    {
        if (state.version >= since)
            (*this)(name, member);
    }
    template <class C, class M>
    void vertices(char const *name, M C::*)
    {
        if (good && !self.read_vertices(state.buffer, state.version))
            fail_at(name);
    }
    // Old files hold four groups of four; group r is column r, its fourth number is nothing.
    template <class C>
    void stored_matrix(char const *name, VEX2_MATRIX C::*member)
    {
        if (state.version > 1.05f || !good)
            return;
        float columns[4][4];
        if (!read_bytes(state.buffer, columns, sizeof columns))
            return fail_at(name);
        for (unsigned column = 0; column < 4; ++column)
            for (unsigned row = 0; row < 3; ++row)
                (self.*member)[row][column] = columns[column][row];
    }
    // A vector channel that stands in files from `from` on and before `before`, and that nobody keeps.
    void obsolete_channel(float from, float before)
    {
        VEX2_OWNED<VEX2_VECTOR_CHANNEL> dropped;
        if (good && state.version >= from && state.version < before && !read_item(state, dropped))
            fail_at("obsolete channel");
    }

    bool good = true;

private:
    void fail_at(char const *name)
    {
        good = false;
        state.buffer.add_place(name);
    }

    READ_STATE<SOURCE> &state;
    T &self;
};

template <class SOURCE, class T>
bool read_item(READ_STATE<SOURCE> &state, T &item)
{
    if constexpr (stored_as_is<T>) {
        return read_bytes(state.buffer, &item, sizeof item);
    } else if constexpr (RECORD<T>) {
        RECORD_READER<SOURCE, T> reader(state, item);
        T::fields(reader);
        return reader.good;
    } else if constexpr (std::is_array_v<T>) {
        for (auto &element : item)
            if (!read_item(state, element))
                return false;
        return true;
    } else if constexpr (std::is_same_v<T, bool>) {
        std::uint32_t stored = 0;
        if (!read_bytes(state.buffer, &stored, sizeof stored))
            return false;
        item = stored != 0;
        return true;
    } else if constexpr (std::is_same_v<T, KN::UniString>) {
        return read_string(state.buffer, item);
    } else if constexpr (requires { item.borrow(item.data, item.count); }) {
        return read_array(state, item);
    } else {
        return read_optional(state, item);
    }
}

template <class T>
bool read_record(VEX2_READ_BUFFER &buffer, float version, T &record)
{
    READ_STATE<VEX2_READ_BUFFER> state{buffer, version};
    return read_item(state, record);
}

}  // namespace VEX2_LOADER
