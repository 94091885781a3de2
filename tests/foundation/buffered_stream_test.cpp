#include "foundation/buffered_stream.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<unsigned char> some_bytes(std::size_t size)
{
    std::vector<unsigned char> bytes(size);
    std::iota(bytes.begin(), bytes.end(), 0);
    return bytes;
}

// Takes fields of random sizes and steps back now and then, beside the same on the plain bytes.
void walk(KN::BufferedStream &stream, std::vector<unsigned char> const &bytes, unsigned seed)
{
    std::mt19937 random(seed);
    std::size_t place = 0, furthest = 0;
    while (place < bytes.size()) {
        unsigned const count = unsigned(std::min<std::size_t>(random() % 9, bytes.size() - place));
        unsigned char field[8];
        ASSERT_EQ(stream.read(field, count), count);
        ASSERT_TRUE(std::equal(field, field + count, bytes.begin() + long(place)));
        place += count;
        ASSERT_EQ(stream.total, place);
        furthest = std::max(furthest, place);
        for (unsigned steps = random() % 3; steps > 0; --steps) {  // one step after another, too
            std::size_t const nearest = furthest - std::min<std::size_t>(furthest, KN::BufferedStream::most_back);
            unsigned const back = unsigned(std::min<std::size_t>(random() % 9, place - nearest));
            stream.skip_back(back);
            place -= back;
        }
    }
    ASSERT_EQ(stream.status(), 0);
    unsigned char more[4] = {};
    stream.skip_back(3);
    EXPECT_EQ(stream.read(more, 4), 3u);  // the end is crossed by one byte
    EXPECT_TRUE(std::equal(more, more + 3, bytes.end() - 3));
    EXPECT_NE(stream.status(), 0);
    EXPECT_EQ(stream.read(more, 1), 0u);
    EXPECT_EQ(stream.total, bytes.size());
}

}  // namespace

TEST(BufferedStream, WindowsOfAnySizeGiveTheSameBytes)
{
    std::vector<unsigned char> const bytes = some_bytes(300);
    for (unsigned window = 1; window <= 40; ++window) {
        SCOPED_TRACE(window);
        KN::BufferedMemory stream(bytes.data(), bytes.size(), window);
        walk(stream, bytes, window);
    }
}

TEST(BufferedStream, AFileIsReadFromItsPlaceOn)
{
    std::vector<unsigned char> const bytes = some_bytes(200);
    KN::String const name(testing::TempDir() + "buffered_stream_test");
    KN::FileOut out;
    ASSERT_TRUE(out.open(name, false, true));
    out.write("head", 4);
    out.write(bytes.data(), unsigned(bytes.size()));
    ASSERT_TRUE(out.close());
    for (unsigned const window : {1u, 7u, 200u, 4096u}) {
        SCOPED_TRACE(window);
        KN::FileIn file;
        ASSERT_TRUE(file.open(name, false));
        file.seek(4);
        KN::BufferedFile stream(file, window);
        walk(stream, bytes, window);
    }
    KN::FileIn none;
    none.open(KN::String(name + ".gone"), false);
    KN::BufferedFile stream(none);
    char byte = 0;
    EXPECT_EQ(stream.read(&byte, 1), 0u);
    EXPECT_NE(stream.status(), 0);
    std::remove(name.c_str());
}
