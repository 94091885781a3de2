#include "support/animation/metadata_records.h"

#include "foundation/buffered_stream.h"
#include "foundation/file.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <type_traits>
#include <typeinfo>

namespace SUPPORT {

namespace {

// A version outside of the range of its source is none, but the start time of a record from before there were any.
constexpr std::uint32_t last_file_version = 100, last_stream_version = 10000;

// The two sources of records.
class RECORD_FILE {
public:
    static constexpr std::uint32_t last_version = last_file_version;

    explicit RECORD_FILE(KN::FileIn &given) : file(given) {}

    unsigned read(void *target, unsigned size) { return file.read(target, size); }
    void step_back(unsigned size)
    {
        std::int64_t const place = std::int64_t(file.tell()) - size;
        file.seek(place <= INT_MAX ? int(place) : int(place - std::int64_t(file.size())));
    }
    void read_text(KN::String &text)
    {
        std::uint16_t size = 0;
        file.read(&size, sizeof size);
        text.resize(size);
        text.resize(file.read(text.data(), size));
    }

private:
    KN::FileIn &file;
};

class RECORD_STREAM {
public:
    static constexpr std::uint32_t last_version = last_stream_version;

    explicit RECORD_STREAM(KN::BufferedStream &given) : stream(given) {}

    unsigned read(void *target, unsigned size) { return stream.read(target, size); }
    void step_back(unsigned size) { stream.skip_back(size); }
    void read_text(KN::String &text)
    {
        std::uint16_t size = 0;
        stream.read(&size, sizeof size);
        std::size_t const before = text.size();
        text.resize(before + size);
        text.resize(before + stream.read(text.data() + before, size));
    }

private:
    KN::BufferedStream &stream;
};

template <class SOURCE, class RECORD>
class READER {
public:
    READER(SOURCE &from, RECORD &record) : source(from), self(record) {}

    std::uint32_t version() const { return self.version; }

    template <class C, class T>
    void operator()(T C::*member)
    {
        take(self.*member);
    }
    template <class C, class T>
    void since(std::uint32_t first, T C::*member)
    {
        if (version() >= first)
            take(self.*member);
    }
    template <class C>
    void word(METADATA_FLAG C::*member)
    {
        KN::String text;
        source.read_text(text);
        self.*member = text == "true";
    }
    template <class C>
    void word_since(std::uint32_t first, METADATA_FLAG C::*member)
    {
        if (version() >= first)
            word(member);
    }
    template <class C, class T>
    void absent(T C::*member, T value)
    {
        self.*member = value;
    }
    void dropped_bytes(unsigned size)
    {
        unsigned char bytes[4];
        source.read(bytes, size);
    }

private:
    template <class T>
    void take(T &value)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        source.read(&value, sizeof value);
    }
    void take(KN::String &text) { source.read_text(text); }
    void take(QUATERNION &rotation)
    {
        source.read(&rotation, sizeof rotation);
        normalise_quaternion(rotation);
    }

    SOURCE &source;
    RECORD &self;
};

// All of the newest form.
template <class RECORD>
class WRITER {
public:
    WRITER(KN::FileOut &to, RECORD const &record) : file(to), self(record) {}

    static constexpr std::uint32_t version() { return newest_metadata_version; }

    template <class C, class T>
    void operator()(T C::*member)
    {
        put(self.*member);
    }
    template <class C, class T>
    void since(std::uint32_t, T C::*member)
    {
        put(self.*member);
    }
    template <class C>
    void word(METADATA_FLAG C::*member)
    {
        put_text(self.*member ? "true" : "false");
    }
    template <class C>
    void word_since(std::uint32_t, METADATA_FLAG C::*member)
    {
        word(member);
    }
    template <class C, class T>
    void absent(T C::*, T)
    {}
    void dropped_bytes(unsigned) {}

private:
    template <class T>
    void put(T const &value)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        file.write(&value, sizeof value);
    }
    void put(KN::String const &text) { put_text(text); }
    void put_text(std::string_view text)
    {
        std::uint16_t const size = std::uint16_t(std::min<std::size_t>(text.size(), UINT16_MAX));
        put(size);
        file.write(text.data(), size);
    }

    KN::FileOut &file;
    RECORD const &self;
};

template <class RECORD>
class COMPARER {
public:
    COMPARER(RECORD const &a, RECORD const &b) : self(a), other(b) {}

    static constexpr std::uint32_t version() { return newest_metadata_version; }

    template <class C, class T>
    void operator()(T C::*member)
    {
        compare(self.*member, other.*member);
    }
    template <class C, class T>
    void since(std::uint32_t, T C::*member)
    {
        compare(self.*member, other.*member);
    }
    template <class C>
    void word(METADATA_FLAG C::*member)
    {
        compare(self.*member, other.*member);
    }
    template <class C>
    void word_since(std::uint32_t, METADATA_FLAG C::*member)
    {
        word(member);
    }
    template <class C, class T>
    void absent(T C::*, T)
    {}
    void dropped_bytes(unsigned) {}

    bool equal = true;

private:
    template <class T>
    void compare(T const &a, T const &b)
    {
        equal = equal && std::memcmp(&a, &b, sizeof a) == 0;
    }
    void compare(KN::String const &a, KN::String const &b) { equal = equal && a == b; }

    RECORD const &self, &other;
};

template <class RECORD, class SOURCE>
void read_fields(SOURCE source, RECORD &record)
{
    READER<SOURCE, RECORD> reader(source, record);
    RECORD::fields(reader);
}

template <class SOURCE>
void read_head(SOURCE source, METADATA_RECORD &record)
{
    unsigned const moved = source.read(&record.version, sizeof record.version);
    if (record.version < 1 || record.version > SOURCE::last_version) {
        record.version = 1;
        source.step_back(moved);
    }
    source.read(&record.start_time, sizeof record.start_time);
    source.read(&record.end_time, sizeof record.end_time);
    read_fields<METADATA_RECORD>(source, record);
}

void clamp_times(METADATA_RECORD &record)
{
    if (record.start_time < 0)
        record.start_time = 0;
    if (record.end_time < 0)
        record.end_time = 0;
}

}  // namespace

void METADATA_RECORD::read(KN::FileIn &file) { read_head(RECORD_FILE(file), *this); }

void METADATA_RECORD::read(KN::BufferedStream &stream) { read_head(RECORD_STREAM(stream), *this); }

void METADATA_RECORD::write(KN::FileOut &file) const
{
    file.write(&version, sizeof version);
    file.write(&start_time, sizeof start_time);
    file.write(&end_time, sizeof end_time);
    WRITER<METADATA_RECORD> writer(file, *this);
    METADATA_RECORD::fields(writer);
}

bool METADATA_RECORD::equals(METADATA_RECORD const &other) const
{
    COMPARER<METADATA_RECORD> comparer(*this, other);
    METADATA_RECORD::fields(comparer);
    comparer(&METADATA_RECORD::version);
    comparer(&METADATA_RECORD::start_time);
    comparer(&METADATA_RECORD::end_time);
    return comparer.equal && typeid(*this) == typeid(other);
}

template <class LAYOUT>
void METADATA_LAYOUT<LAYOUT>::read(KN::FileIn &file)
{
    METADATA_RECORD::read(file);
    LAYOUT &record = static_cast<LAYOUT &>(*this);
    read_fields(RECORD_FILE(file), record);
    record.settle_after_reading();
}

template <class LAYOUT>
void METADATA_LAYOUT<LAYOUT>::read(KN::BufferedStream &stream)
{
    METADATA_RECORD::read(stream);
    LAYOUT &record = static_cast<LAYOUT &>(*this);
    read_fields(RECORD_STREAM(stream), record);
    record.settle_after_reading();
}

template <class LAYOUT>
void METADATA_LAYOUT<LAYOUT>::write(KN::FileOut &file) const
{
    METADATA_RECORD::write(file);
    LAYOUT stored = static_cast<LAYOUT const &>(*this);
    stored.settle_before_writing();
    WRITER<LAYOUT> writer(file, stored);
    LAYOUT::fields(writer);
}

template <class LAYOUT>
bool METADATA_LAYOUT<LAYOUT>::equals(METADATA_RECORD const &other) const
{
    if (!METADATA_RECORD::equals(other))
        return false;
    COMPARER<LAYOUT> comparer(static_cast<LAYOUT const &>(*this), static_cast<LAYOUT const &>(other));
    LAYOUT::fields(comparer);
    return comparer.equal;
}

template class METADATA_LAYOUT<METADATA_SHAPED_AREA>;
template class METADATA_LAYOUT<METADATA_EIGHT_VALUES>;
template class METADATA_LAYOUT<METADATA_NAMED_EFFECT>;
template class METADATA_LAYOUT<METADATA_SCALAR>;
template class METADATA_LAYOUT<METADATA_SCALAR_TRIPLE>;
template class METADATA_LAYOUT<METADATA_PAIR>;
template class METADATA_LAYOUT<METADATA_NAMED_PROP>;
template class METADATA_LAYOUT<METADATA_NAMED_POINT>;
template class METADATA_LAYOUT<METADATA_TIMED_POINT>;
template class METADATA_LAYOUT<METADATA_TIMED_PAIR>;
template class METADATA_LAYOUT<METADATA_NAMED_BLEND>;
template class METADATA_LAYOUT<METADATA_TEXT>;
template class METADATA_LAYOUT<METADATA_NODE_TRANSFORM>;
template class METADATA_LAYOUT<METADATA_VECTOR>;
template class METADATA_LAYOUT<METADATA_DOUBLE_TRANSFORM>;

void METADATA_NAMED_EFFECT::settle_before_writing()
{
    if (name.lower().find("_loop") != name.npos)
        loops = 1;
}

void METADATA_TIMED_POINT::settle_after_reading() { clamp_times(*this); }

void METADATA_TIMED_PAIR::settle_after_reading() { clamp_times(*this); }

std::unique_ptr<METADATA_RECORD> make_metadata_record(std::int32_t category)
{
    switch (category) {
    case CATEGORY_PLAIN:
        return std::make_unique<METADATA_RECORD>();
    case CATEGORY_WHOLE_NUMBER:
        return std::make_unique<METADATA_SCALAR_TRIPLE>();  // a blend override has three numbers
    case CATEGORY_REAL_NUMBER:
        return std::make_unique<METADATA_SCALAR>();
    case CATEGORY_POSITION:
        return std::make_unique<METADATA_VECTOR>();
    case CATEGORY_WOUNDED_POSE:
        return std::make_unique<METADATA_PAIR>();
    case CATEGORY_POSE_KEY:
        return std::make_unique<METADATA_TEXT>();
    case CATEGORY_DISMEMBERMENT:
        return std::make_unique<METADATA_EIGHT_VALUES>();
    case CATEGORY_SPLICE_WITH_WEIGHTS:
        return std::make_unique<METADATA_NAMED_BLEND>();
    case CATEGORY_TRANSFORM_OF_NODE:
        return std::make_unique<METADATA_NODE_TRANSFORM>();
    case CATEGORY_EFFECT_AT_NODE:
        return std::make_unique<METADATA_NAMED_EFFECT>();
    case CATEGORY_VOLUMETRIC_EFFECTS:
        return std::make_unique<METADATA_DOUBLE_TRANSFORM>();
    case CATEGORY_PROP_AT_NODE:
        return std::make_unique<METADATA_NAMED_PROP>();
    case CATEGORY_SPLASH_AREA:
        return std::make_unique<METADATA_SHAPED_AREA>();
    case CATEGORY_SOUND_IMPACT_DATA:
        return std::make_unique<METADATA_TIMED_PAIR>();
    case CATEGORY_SOUND_AND_POSITION:
        return std::make_unique<METADATA_TIMED_POINT>();
    case CATEGORY_SOUND_TYPE:
        return std::make_unique<METADATA_NAMED_POINT>();
    default:
        return nullptr;
    }
}

}  // namespace SUPPORT
