#include "support/animation/metadata_records.h"

#include "tests/support/animation/made_file.h"

#include <cmath>
#include <random>
#include <sstream>

using namespace SUPPORT;

namespace {

// What each layout looks like in a file, told a second time. A field: "4" four bytes, "s" a text, "f" a flag of a byte,
// "t" one in words, "q" a rotation, "l" the flag that was in words up to version 5, "n" the text that was a number up
// to version 3, "c" the number of version 3 and from 5 on; before it how often, or "V:" from which version on.
struct {
    std::int32_t category;
    char const *fields;
} const layouts[] = {
    {CATEGORY_PLAIN, ""},
    {CATEGORY_WHOLE_NUMBER, "4 3:4 3:4"},
    {CATEGORY_REAL_NUMBER, "4"},
    {CATEGORY_POSITION, "4 4 4"},
    {CATEGORY_WOUNDED_POSE, "4 4"},
    {CATEGORY_POSE_KEY, "s"},
    {CATEGORY_DISMEMBERMENT, "4 4 4 4 4 4 4 4"},
    {CATEGORY_SPLICE_WITH_WEIGHTS, "s 3:s 5:4 6:4 5:4 4 11:4 4 4 4 3:4 3:4 3:t t 4:t 5:t 12:t"},
    {CATEGORY_TRANSFORM_OF_NODE, "4 4 4 4 4 q 3:4 3:4"},
    {CATEGORY_EFFECT_AT_NODE, "s 11:4 l 6:f 7:f 4 4 4 q 4 c"},
    {CATEGORY_VOLUMETRIC_EFFECTS, "s 4 4 4 q 4 4 4 4 4 4 q 4 4 4"},
    {CATEGORY_PROP_AT_NODE, "5:f s s 4 4 4 q 4 3:4 4:4"},
    {CATEGORY_SPLASH_AREA, "4 4 4 4 4 4 4 4 4 3:4 3:4 4:s"},
    {CATEGORY_SOUND_IMPACT_DATA, "4 4"},
    {CATEGORY_SOUND_AND_POSITION, "4 4 4 4 4"},
    {CATEGORY_SOUND_TYPE, "n 4 3:4 3:4 3:4"},
};

class RECORD_BYTES {
public:
    RECORD_BYTES(unsigned seed) : random(seed) {}

    BYTES record(char const *fields, std::uint32_t version)
    {
        BYTES bytes = u32(version) + f32(1.5f) + f32(2.5f);
        if (version >= 2)
            bytes += some_text();
        if (version >= 10)
            bytes += four();
        std::istringstream list(fields);
        for (std::string field; list >> field;) {
            std::size_t const colon = field.find(':');
            if (colon != field.npos && version < unsigned(std::stoi(field)))
                continue;
            char const form = field.back();
            bool const as_word = form == 't' || (form == 'l' && version <= 5);
            if (as_word)
                bytes += text(random() % 2 ? "true" : "false");
            else if (form == 'l' || form == 'f')
                bytes += char(random() % 3);
            else if (form == 's' || (form == 'n' && version >= 4))
                bytes += some_text();
            else if (form == 'q')
                bytes += f32(0.5f) + f32(-0.5f) + f32(-0.5f) + f32(random() % 2 ? 0.5f : -0.5f);  // of length 1
            else if (form != 'c' || version == 3 || version >= 5)
                bytes += four();
        }
        return bytes;
    }

private:
    BYTES four() { return u32(random()); }
    BYTES some_text() { return text(std::string(random() % 12, char('a' + random() % 26))); }

    std::mt19937 random;
};

std::unique_ptr<METADATA_RECORD> from_file(BYTES const &bytes, std::int32_t category)
{
    auto record = make_metadata_record(category);
    DISK_FILE disk(bytes);
    record->read(disk.file);
    EXPECT_EQ(disk.file.tell(), bytes.size());
    EXPECT_EQ(disk.file.status(), 0);
    return record;
}

std::unique_ptr<METADATA_RECORD> from_stream(BYTES const &bytes, std::int32_t category, unsigned window)
{
    auto record = make_metadata_record(category);
    KN::BufferedMemory stream(bytes.data(), bytes.size(), window);
    record->read(stream);
    EXPECT_EQ(stream.total, bytes.size());
    EXPECT_EQ(stream.status(), 0);
    return record;
}

BYTES written(METADATA_RECORD const &record)
{
    KN::String const name(testing::TempDir() + "metadata_records_test_" + std::to_string(getpid()));
    KN::FileOut out;
    EXPECT_TRUE(out.open(name, false, true));
    record.write(out);
    EXPECT_TRUE(out.close());
    KN::MemFileIn in;
    EXPECT_TRUE(in.open(name, true));
    BYTES bytes(in.size(), '\0');
    in.read(bytes.data(), in.size());
    std::remove(name.c_str());
    return bytes;
}

// The record of that layout, read from the bytes.
template <class LAYOUT>
LAYOUT read_as(BYTES const &bytes)
{
    LAYOUT record;
    KN::BufferedMemory stream(bytes.data(), bytes.size());
    record.read(stream);
    EXPECT_EQ(stream.total, bytes.size());
    return record;
}

BYTES head(std::uint32_t version, float start = 1, float end = 2)
{
    BYTES bytes = u32(version) + f32(start) + f32(end);
    if (version >= 2)
        bytes += text("tag");
    if (version >= 10)
        bytes += u32(7);
    return bytes;
}

}  // namespace

TEST(MetadataRecords, EveryLayoutAndVersionFromFileAndStream)
{
    for (auto const &layout : layouts) {
        for (std::uint32_t version = 1; version <= newest_metadata_version; ++version) {
            SCOPED_TRACE(testing::Message() << "category " << layout.category << " version " << version);
            BYTES const bytes = RECORD_BYTES(version * 16 + unsigned(layout.category)).record(layout.fields, version);
            auto const record = from_file(bytes, layout.category);
            EXPECT_EQ(record->version, version);
            for (unsigned const window : {1u, 5u, 16u, 4096u})
                EXPECT_TRUE(from_stream(bytes, layout.category, window)->equals(*record)) << window;
            if (version != newest_metadata_version)
                continue;
            BYTES const again = written(*record);
            EXPECT_EQ(again.size(), bytes.size());
            EXPECT_TRUE(from_file(again, layout.category)->equals(*record));
            EXPECT_FALSE(record->equals(*make_metadata_record(layout.category)));
        }
    }
    EXPECT_EQ(make_metadata_record(CATEGORY_COUNT), nullptr);
    EXPECT_EQ(make_metadata_record(-1), nullptr);
}

// The first number of a record without version is its start time.
TEST(MetadataRecords, VersionsHaveTheirRange)
{
    struct {
        std::uint32_t first;
        bool in_file, in_stream;
    } const cases[] = {{0, false, false},    {1, true, true},       {100, true, true},         {101, false, true},
                       {10000, false, true}, {10001, false, false}, {0x3f800000, false, false}};
    for (auto const &c : cases) {
        BYTES const rest = f32(3) + f32(4) + text("ab") + u32(9);
        BYTES const bytes = u32(c.first) + rest;
        METADATA_RECORD file_record, stream_record;
        DISK_FILE disk(bytes);
        file_record.read(disk.file);
        KN::BufferedMemory stream(bytes.data(), bytes.size(), 4);  // the step back crosses a window
        stream_record.read(stream);
        for (auto const &[record, is_version] : {std::pair(&file_record, c.in_file), {&stream_record, c.in_stream}}) {
            EXPECT_EQ(record->version, is_version ? c.first : 1) << c.first;
            EXPECT_EQ(record->start_time, is_version ? 3 : std::bit_cast<float>(c.first)) << c.first;
            EXPECT_EQ(record->end_time, is_version ? 4 : 3) << c.first;
            EXPECT_EQ(record->tag_text, is_version && c.first > 1 ? "ab" : "") << c.first;
        }
    }
}

TEST(MetadataRecords, FieldsThatCameAndWent)
{
    BYTES const where = f32(1) + f32(2) + f32(3) + f32(0) + f32(0) + f32(0) + f32(2) + u32(5);
    auto const effect = [&](std::uint32_t version, BYTES const &middle, BYTES const &end) {
        return read_as<METADATA_NAMED_EFFECT>(head(version) + text("smoke") + middle + where + end);
    };
    EXPECT_EQ(effect(3, text("true"), f32(7)).scale, 7);
    EXPECT_EQ(effect(4, text("true"), "").scale, 1);
    EXPECT_EQ(effect(4, text("true"), "").loops, 1);
    EXPECT_EQ(effect(5, text("True"), f32(7)).loops, 0);
    EXPECT_EQ(effect(6, {'\2', '\3'}, f32(7)).loops, 2);
    EXPECT_EQ(effect(6, {'\2', '\3'}, f32(7)).flag_b, 3);
    EXPECT_EQ(effect(3, text("true"), f32(7)).orientation, (QUATERNION{0, 0, 0, 1}));

    auto const old = read_as<METADATA_NAMED_POINT>(head(3) + u32(99) + u32(4) + f32(1) + f32(2) + f32(3));
    EXPECT_EQ(old.name, "");
    EXPECT_EQ(old.value.bits, 4u);
    EXPECT_EQ(old.point[2].number(), 3);
}

// Neighbours of one size could change places without any other test seeing it.
TEST(MetadataRecords, FieldsStandInTheirOrder)
{
    auto const numbers = [](std::uint32_t first, std::uint32_t last) {
        BYTES bytes;
        for (; first <= last; ++first)
            bytes += u32(first);
        return bytes;
    };
    auto const expect_run = [](std::uint32_t first, std::vector<METADATA_WORD> const &words) {
        for (METADATA_WORD const &word : words)
            EXPECT_EQ(word.bits, first++);
    };
    BYTES const rotation = f32(0) + f32(0.6f) + f32(0) + f32(0.8f), other_rotation = f32(0) + f32(0) + f32(1) + f32(0);

    auto const blend = read_as<METADATA_NAMED_BLEND>(head(12) + text("x") + text("y") + numbers(1, 10) + text("true") +
                                                     text("false") + text("false") + text("true") + text("true"));
    EXPECT_EQ(blend.name_a + blend.name_b, "xy");
    expect_run(1, {blend.a, blend.b, blend.c, blend.d, blend.e, blend.f[0], blend.f[1], blend.g, blend.h[0]});
    EXPECT_EQ(blend.flag_a * 16 + blend.flag_b * 8 + blend.flag_c * 4 + blend.flag_d * 2 + blend.flag_e, 0b10011);

    auto const prop = read_as<METADATA_NAMED_PROP>(head(12) + '\5' + text("x") + text("y") + f32(1) + f32(2) + f32(3) +
                                                   rotation + numbers(1, 3));
    EXPECT_EQ(prop.name_a + prop.name_b, "xy");
    EXPECT_EQ(prop.position, (VECTOR3{1, 2, 3}));
    expect_run(1, {prop.node_index, {prop.mode_a}, {prop.mode_b}});

    auto const area = read_as<METADATA_SHAPED_AREA>(head(12) + numbers(0, 10) + text("x"));
    EXPECT_EQ(area.shape, 0u);
    expect_run(1, {area.a, area.b[0], area.b[1], area.b[2], area.b[3], area.b[4], area.b[5], area.b[6], area.c[0]});

    auto const transforms = read_as<METADATA_DOUBLE_TRANSFORM>(
        head(12) + text("x") + f32(1) + f32(2) + f32(3) + rotation + numbers(1, 6) + other_rotation + numbers(7, 9));
    EXPECT_EQ(transforms.position_a, (VECTOR3{1, 2, 3}));
    EXPECT_EQ(transforms.orientation_b, (QUATERNION{0, 0, 1, 0}));
    expect_run(7, {transforms.b[0], transforms.b[1], transforms.b[2]});

    auto const point = read_as<METADATA_TIMED_POINT>(head(12) + numbers(1, 5));
    expect_run(1, {point.value, point.point[0], point.point[1], point.point[2], point.value_b});
}

TEST(MetadataRecords, RotationsAreNormalisedAndOthersAreNot)
{
    auto const transform = [](float x, float y, float z, float w) {
        return read_as<METADATA_NODE_TRANSFORM>(head(1) + u32(1) + u32(0x7f800001) + f32(2) + f32(3) + f32(4) + f32(x) +
                                                f32(y) + f32(z) + f32(w));
    };
    EXPECT_EQ(transform(0, 3, 0, 4).orientation, (QUATERNION{0, 0.6f, 0, 0.8f}));
    EXPECT_EQ(transform(0, 0, 0, 0).orientation, QUATERNION());
    EXPECT_EQ(transform(5e-4f, 5e-4f, 5e-4f, 0).orientation, QUATERNION());  // 7.5e-7
    EXPECT_EQ(transform(NAN, 0, 0, 1).orientation, QUATERNION());
    EXPECT_EQ(transform(0, 0, 0, 1).translation[0].bits, 0x7f800001u);  // a signalling NaN comes through
    METADATA_NODE_TRANSFORM record;
    record.orientation = {0, 0, 0, 4};
    EXPECT_NE(written(record).find(f32(4)), BYTES::npos);  // stored as memory holds it
}

TEST(MetadataRecords, TimesOfTheTimedLayoutsAreNotBelow0)
{
    BYTES const bytes = head(1, -1, -2) + u32(1) + u32(2);
    EXPECT_EQ(read_as<METADATA_TIMED_PAIR>(bytes).start_time, 0);
    EXPECT_EQ(read_as<METADATA_TIMED_PAIR>(bytes).end_time, 0);
    EXPECT_EQ(read_as<METADATA_PAIR>(bytes).end_time, -2);
    EXPECT_EQ(read_as<METADATA_TIMED_POINT>(bytes + u32(3) + u32(4) + u32(5)).start_time, 0);
}

TEST(MetadataRecords, ALoopInTheNameIsStoredAsAFlag)
{
    METADATA_NAMED_EFFECT record;
    for (auto const &[name, flag, stored] :
         {std::tuple("fire_LOOP_2", 0, 1), {"fire", 0, 0}, {"fire", 2, 2}, {"fire_Loop", 2, 1}}) {
        record.name = name;
        record.loops = METADATA_FLAG(flag);
        EXPECT_EQ(read_as<METADATA_NAMED_EFFECT>(written(record)).loops, stored) << name;
        EXPECT_EQ(record.loops, flag);
    }
}

TEST(MetadataRecords, CutOffAnywhere)
{
    for (auto const &layout : layouts) {
        BYTES const bytes = RECORD_BYTES(unsigned(layout.category)).record(layout.fields, newest_metadata_version);
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            std::unique_ptr<char[]> const block(new char[size]);
            std::memcpy(block.get(), bytes.data(), size);
            auto const record = make_metadata_record(layout.category);
            KN::BufferedMemory stream(block.get(), size, 6);
            record->read(stream);
            EXPECT_NE(stream.status(), 0);
            EXPECT_LE(stream.total, size);
        }
    }
    METADATA_TEXT record;  // a stream appends, a file replaces
    BYTES const bytes = head(1) + text("more");
    record.text = "some ";
    KN::BufferedMemory stream(bytes.data(), bytes.size());
    record.read(stream);
    EXPECT_EQ(record.text, "some more");
    DISK_FILE disk(bytes);
    record.read(disk.file);
    EXPECT_EQ(record.text, "more");
}
