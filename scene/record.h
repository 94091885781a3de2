// What every record of a scene is made of: the three interfaces, the owning pointer for optional parts, and the owning
// list. A record describes its fields once, in file order, in a template
//
//     template <class VISITOR> static void fields(VISITOR &v)
//     {
//         BASE::fields(v);                                   // those of the base record come first
//         v("name", &RECORD::name);                          // in every file
//         v("extent", &RECORD::extent, 1.13f);               // in files of version 1.13 and later
//         v.computed("matrix", &RECORD::matrix);             // in memory only
//     }
//
// and reading, writing, comparing, moving in time, dumping and the least size of a record in a file are visitors of
// that description (scene/fields.h). The type of a field says how it is stored: numbers as they are, a bool as a u32, a
// text as a u16 count and its units, KN::DynamicArray as a u32 count and the elements, VEX2_OWNED as a u32 present
// flag, a u32 subtype and the record, C arrays and records as their elements and fields one behind the other.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"
#include "scene/api.h"

#include <cstdint>

namespace VEX2_LOADER {

class VEX2_READ_BUFFER;
class VEX2_CHUNK_WRITER;

class VEX2_SERIAL {
public:
    virtual ~VEX2_SERIAL() = default;
    // `version`: that of the file. Fields that the version lacks keep their values. False if the bytes run out or do
    // not make such a record; the buffer then holds the cause.
    virtual bool read(VEX2_READ_BUFFER &buffer, float version) = 0;
    // True if every byte was written.
    virtual bool write(VEX2_CHUNK_WRITER &writer) const = 0;
};

class VEX2_ANIMATED {
public:
    virtual ~VEX2_ANIMATED() = default;
    virtual void advance(float delta) = 0;  // seconds
    virtual void seek(float time) = 0;      // seconds
};

class VEX2_CHUNK {
public:
    virtual ~VEX2_CHUNK() = default;
    virtual std::uint32_t chunk_type() const = 0;
};

// An optional part of a record, or null. Copying copies the part through its clone().
template <class T>
class VEX2_OWNED {
public:
    VEX2_OWNED() = default;
    VEX2_OWNED(T *taken) : part(taken) {}  // takes it over
    VEX2_OWNED(VEX2_OWNED const &other) : part(other.part ? static_cast<T *>(other.part->clone()) : nullptr) {}
    VEX2_OWNED(VEX2_OWNED &&other) noexcept : part(other.release()) {}
    VEX2_OWNED &operator=(VEX2_OWNED other) noexcept
    {
        std::swap(part, other.part);
        return *this;
    }
    ~VEX2_OWNED() { delete part; }

    T *get() const { return part; }
    operator T *() const { return part; }
    T *operator->() const { return part; }
    T *release() { return std::exchange(part, nullptr); }

private:
    T *part = nullptr;
};

// A list of the scene: plain pointers that the list deletes. Elements may be null.
template <class T>
class VEX2_LIST : public KN::DynamicArray<T *> {
public:
    VEX2_LIST() = default;
    VEX2_LIST(VEX2_LIST const &) = delete;
    VEX2_LIST &operator=(VEX2_LIST const &) = delete;
    ~VEX2_LIST() { clear(); }

    void clear()
    {
        for (T *element : *this)
            delete element;
        KN::DynamicArray<T *>::clear();
    }
};

// The declarations that a class with `fields` repeats; scene/fields.h has their definitions.
#define VEX2_SERIAL_OPERATIONS                                                                                         \
    bool read(VEX2_READ_BUFFER &buffer, float version) override;                                                       \
    bool write(VEX2_CHUNK_WRITER &writer) const override;
#define VEX2_ANIMATED_OPERATIONS                                                                                       \
    void advance(float delta) override;                                                                                \
    void seek(float time) override;

}  // namespace VEX2_LOADER
