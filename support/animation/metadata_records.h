// The binary form of animation metadata: one record is a common head and the payload of its layout. Fifteen layouts;
// each describes its fields once (`fields`), in the order of the file and with the versions that have them, and is read
// from a file, read from a stream, written and compared by that description.
//
// Readers report nothing: what is there is taken, what is missing leaves its field as it was or cut short, and the
// source says afterwards whether it ran out. They expect a new record: fields that a version lacks keep their values,
// and a stream appends to texts. Writers write the newest form, whatever `version` says, so a record that is to be read
// again has newest_metadata_version. A record belongs to one thread at a time.
#pragma once

#include "foundation/string.h"
#include "support/animation/metadata_kinds.h"
#include "support/maths/quaternion.h"

#include <bit>
#include <memory>

namespace KN {
class BufferedStream;
class FileIn;
class FileOut;
}  // namespace KN

namespace SUPPORT {

inline constexpr std::uint32_t newest_metadata_version = 12;

// Four bytes that go through unchanged, whatever they mean.
struct METADATA_WORD {
    std::uint32_t bits = 0;

    float number() const { return std::bit_cast<float>(bits); }
    static METADATA_WORD of(float number) { return {std::bit_cast<std::uint32_t>(number)}; }
    bool operator==(METADATA_WORD const &) const = default;
};

// One byte, kept as it was read.
using METADATA_FLAG = std::uint8_t;

// The head, and all there is to a record without a value.
class METADATA_RECORD {
public:
    virtual ~METADATA_RECORD() = default;

    virtual void read(KN::FileIn &file);
    virtual void read(KN::BufferedStream &stream);
    virtual void write(KN::FileOut &file) const;
    // Same layout, and all fields equal bit for bit.
    virtual bool equals(METADATA_RECORD const &other) const;

    std::uint32_t version = newest_metadata_version;
    float start_time = 0, end_time = 0;  // seconds
    KN::String tag_text;
    METADATA_WORD tag_value;

    // What follows `version` and the times, which stand in every file.
    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v.since(2, &METADATA_RECORD::tag_text);
        v.since(10, &METADATA_RECORD::tag_value);
    }
};

// The operations of a layout, from its fields.
template <class LAYOUT>
class METADATA_LAYOUT : public METADATA_RECORD {
public:
    void read(KN::FileIn &file) override;
    void read(KN::BufferedStream &stream) override;
    void write(KN::FileOut &file) const override;
    bool equals(METADATA_RECORD const &other) const override;

    // After reading, and before writing a copy.
    void settle_after_reading() {}
    void settle_before_writing() {}
};

class METADATA_SHAPED_AREA : public METADATA_LAYOUT<METADATA_SHAPED_AREA> {
public:
    std::uint32_t shape = 0;  // an AREA_SHAPE
    METADATA_WORD a, b[7], c[2];
    KN::String text;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_SHAPED_AREA::shape);
        v(&METADATA_SHAPED_AREA::a);
        v(&METADATA_SHAPED_AREA::b);
        v.since(3, &METADATA_SHAPED_AREA::c);
        v.since(4, &METADATA_SHAPED_AREA::text);
    }
};

class METADATA_EIGHT_VALUES : public METADATA_LAYOUT<METADATA_EIGHT_VALUES> {
public:
    METADATA_WORD values[8];

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_EIGHT_VALUES::values);
    }
};

class METADATA_NAMED_EFFECT : public METADATA_LAYOUT<METADATA_NAMED_EFFECT> {
public:
    KN::String name;
    METADATA_WORD a;
    METADATA_FLAG loops = 0;  // stored as 1, whatever stands here, if the name holds "_loop" in any case
    METADATA_FLAG flag_b = 0, flag_c = 0;
    VECTOR3 position;
    QUATERNION orientation;
    METADATA_WORD node_index;
    float scale = 1;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_NAMED_EFFECT::name);
        v.since(11, &METADATA_NAMED_EFFECT::a);
        if (v.version() <= 5)
            v.word(&METADATA_NAMED_EFFECT::loops);
        else
            v(&METADATA_NAMED_EFFECT::loops);
        v.since(6, &METADATA_NAMED_EFFECT::flag_b);
        v.since(7, &METADATA_NAMED_EFFECT::flag_c);
        v(&METADATA_NAMED_EFFECT::position);
        v(&METADATA_NAMED_EFFECT::orientation);
        v(&METADATA_NAMED_EFFECT::node_index);
        if (v.version() == 3 || v.version() >= 5)
            v(&METADATA_NAMED_EFFECT::scale);
        else
            v.absent(&METADATA_NAMED_EFFECT::scale, 1.0f);
    }
    void settle_before_writing();
};

class METADATA_SCALAR : public METADATA_LAYOUT<METADATA_SCALAR> {
public:
    METADATA_WORD value;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_SCALAR::value);
    }
};

class METADATA_SCALAR_TRIPLE : public METADATA_LAYOUT<METADATA_SCALAR_TRIPLE> {
public:
    METADATA_WORD value, b, c;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_SCALAR_TRIPLE::value);
        v.since(3, &METADATA_SCALAR_TRIPLE::b);
        v.since(3, &METADATA_SCALAR_TRIPLE::c);
    }
};

class METADATA_PAIR : public METADATA_LAYOUT<METADATA_PAIR> {
public:
    METADATA_WORD a, b;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_PAIR::a);
        v(&METADATA_PAIR::b);
    }
};

class METADATA_NAMED_PROP : public METADATA_LAYOUT<METADATA_NAMED_PROP> {
public:
    METADATA_FLAG flag = 0;
    KN::String name_a, name_b;
    VECTOR3 position;
    QUATERNION orientation;
    METADATA_WORD node_index;
    std::uint32_t mode_a = 0;  // a POSE_SOURCE
    std::uint32_t mode_b = 0;  // an ABILITY_MODE

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v.since(5, &METADATA_NAMED_PROP::flag);
        v(&METADATA_NAMED_PROP::name_a);
        v(&METADATA_NAMED_PROP::name_b);
        v(&METADATA_NAMED_PROP::position);
        v(&METADATA_NAMED_PROP::orientation);
        v(&METADATA_NAMED_PROP::node_index);
        v.since(3, &METADATA_NAMED_PROP::mode_a);
        v.since(4, &METADATA_NAMED_PROP::mode_b);
    }
};

class METADATA_NAMED_POINT : public METADATA_LAYOUT<METADATA_NAMED_POINT> {
public:
    KN::String name;
    METADATA_WORD value;
    METADATA_WORD point[3];

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        if (v.version() <= 3)
            v.dropped_bytes(4);  // a number stood for the name
        else
            v(&METADATA_NAMED_POINT::name);
        v(&METADATA_NAMED_POINT::value);
        v.since(3, &METADATA_NAMED_POINT::point);
    }
};

// The two timed layouts: after reading, a time below 0 is 0.
class METADATA_TIMED_POINT : public METADATA_LAYOUT<METADATA_TIMED_POINT> {
public:
    METADATA_WORD value;
    METADATA_WORD point[3];
    METADATA_WORD value_b;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_TIMED_POINT::value);
        v(&METADATA_TIMED_POINT::point);
        v(&METADATA_TIMED_POINT::value_b);
    }
    void settle_after_reading();
};

class METADATA_TIMED_PAIR : public METADATA_LAYOUT<METADATA_TIMED_PAIR> {
public:
    METADATA_WORD a, b;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_TIMED_PAIR::a);
        v(&METADATA_TIMED_PAIR::b);
    }
    void settle_after_reading();
};

class METADATA_NAMED_BLEND : public METADATA_LAYOUT<METADATA_NAMED_BLEND> {
public:
    KN::String name_a, name_b;
    METADATA_WORD a, b, c, d, e, f[2], g, h[2];
    METADATA_FLAG flag_a = 0, flag_b = 0, flag_c = 0, flag_d = 0, flag_e = 0;  // stored as words

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_NAMED_BLEND::name_a);
        v.since(3, &METADATA_NAMED_BLEND::name_b);
        v.since(5, &METADATA_NAMED_BLEND::a);
        v.since(6, &METADATA_NAMED_BLEND::b);
        v.since(5, &METADATA_NAMED_BLEND::c);
        v(&METADATA_NAMED_BLEND::d);
        v.since(11, &METADATA_NAMED_BLEND::e);
        v(&METADATA_NAMED_BLEND::f);
        v(&METADATA_NAMED_BLEND::g);
        v.since(3, &METADATA_NAMED_BLEND::h);
        v.word_since(3, &METADATA_NAMED_BLEND::flag_a);
        v.word(&METADATA_NAMED_BLEND::flag_b);
        v.word_since(4, &METADATA_NAMED_BLEND::flag_c);
        v.word_since(5, &METADATA_NAMED_BLEND::flag_d);
        v.word_since(12, &METADATA_NAMED_BLEND::flag_e);
    }
};

class METADATA_TEXT : public METADATA_LAYOUT<METADATA_TEXT> {
public:
    KN::String text;

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_TEXT::text);
    }
};

class METADATA_NODE_TRANSFORM : public METADATA_LAYOUT<METADATA_NODE_TRANSFORM> {
public:
    METADATA_WORD node_index;
    METADATA_WORD translation[4];
    QUATERNION orientation;
    METADATA_WORD a[2];

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_NODE_TRANSFORM::node_index);
        v(&METADATA_NODE_TRANSFORM::translation);
        v(&METADATA_NODE_TRANSFORM::orientation);
        v.since(3, &METADATA_NODE_TRANSFORM::a);
    }
};

class METADATA_VECTOR : public METADATA_LAYOUT<METADATA_VECTOR> {
public:
    METADATA_WORD value[3];

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_VECTOR::value);
    }
};

class METADATA_DOUBLE_TRANSFORM : public METADATA_LAYOUT<METADATA_DOUBLE_TRANSFORM> {
public:
    KN::String name;
    VECTOR3 position_a;
    QUATERNION orientation_a;
    METADATA_WORD a[6];
    QUATERNION orientation_b;
    METADATA_WORD b[3];

    template <class VISITOR>
    static void fields(VISITOR &v)
    {
        v(&METADATA_DOUBLE_TRANSFORM::name);
        v(&METADATA_DOUBLE_TRANSFORM::position_a);
        v(&METADATA_DOUBLE_TRANSFORM::orientation_a);
        v(&METADATA_DOUBLE_TRANSFORM::a);
        v(&METADATA_DOUBLE_TRANSFORM::orientation_b);
        v(&METADATA_DOUBLE_TRANSFORM::b);
    }
};

// A new record of the layout that belongs to the category of a kind (metadata_kind_category); null for other numbers.
std::unique_ptr<METADATA_RECORD> make_metadata_record(std::int32_t category);

}  // namespace SUPPORT
