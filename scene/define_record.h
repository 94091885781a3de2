// The definitions that go with the declarations of scene/record.h, one line per class in its source file. The head of a
// class template follows the class.
#pragma once

#include "scene/move_fields.h"
#include "scene/read_fields.h"
#include "scene/write_fields.h"

#define VEX2_DEFINE_SERIAL(CLASS, ...)                                                                                 \
    __VA_ARGS__ bool CLASS::read(VEX2_READ_BUFFER &buffer, float version)                                              \
    {                                                                                                                  \
        return read_record(buffer, version, *this);                                                                    \
    }                                                                                                                  \
    __VA_ARGS__ bool CLASS::write(VEX2_CHUNK_WRITER &writer) const { return write_item(writer, *this); }
#define VEX2_DEFINE_ANIMATED(CLASS, ...)                                                                               \
    __VA_ARGS__ void CLASS::advance(float delta) { move_record(*this, ADVANCE{delta}); }                               \
    __VA_ARGS__ void CLASS::seek(float time) { move_record(*this, SEEK{time}); }
