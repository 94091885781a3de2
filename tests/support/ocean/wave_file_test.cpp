#include "made_field.h"
#include "support/ocean/ocean_simulation.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace SUPPORT;

namespace {

BYTES contents(KN::String const &path)
{
    std::ifstream file(path, std::ios::binary);
    return BYTES(std::istreambuf_iterator<char>(file), {});
}

BYTES changed(std::size_t offset, BYTES const &bytes)
{
    BYTES file = made_file();
    return file.replace(offset, bytes.size(), bytes);
}

}  // namespace

TEST(WaveFile, IsReadAndWrittenByteForByte)
{
    BYTES file = made_file();
    file.replace(file.size() - 8, 8, u32(1) + u32(1) + u32(0) + f32(0.5f) + f32(0.75f) + u32(1) + u32(7) + u32(9));
    OCEAN_WAVE_FIELD field;
    ASSERT_TRUE(read_bytes(field, file));
    EXPECT_EQ(field.grid, 2u);
    EXPECT_EQ(field.fixed_scale, 4096);
    EXPECT_EQ(field.frame_count, 2u);
    EXPECT_TRUE(field.looped && field.choppy && field.crests_enabled && field.name.empty());
    EXPECT_EQ(field.ranges.slope_max_x, 30720 + 16 * 255);
    EXPECT_EQ(field.ranges.displacement_max_y, 15.5f);
    EXPECT_EQ(field.frames[1].heights.at(1, 0), 30);
    EXPECT_EQ(field.frames[0].slopes.at(1, 1).y, 64);
    EXPECT_EQ(field.frames[1].crests[0].strength, 0.5f);
    EXPECT_EQ(field.frames[1].pairs[0].second, 9u);
    EXPECT_FALSE(field.height.is_allocated());

    std::string const folder = testing::TempDir();
    ASSERT_TRUE(field.write(folder + "\\wave_bytes"));  // as a path of another system
    EXPECT_EQ(contents(folder + "/wave_bytes"), file);
}

TEST(WaveFile, FaultyBytesAreRefused)
{
    BYTES const whole = made_file();
    struct {
        char const *fault;
        BYTES bytes;
    } const cases[] = {
        {"another magic", changed(0, u32(0x12345679))},
        {"another version", changed(4, u32(2))},
        {"grid is no power of two", changed(8, u32(3))},
        {"grid is 0", changed(8, u32(0))},
        {"grid is huge", changed(8, u32(1u << 31))},
        {"grid is not that of the planes", changed(8, u32(4))},
        {"no frames", made_header(0)},
        {"fewer frames than told", changed(20, u32(3))},
        {"frames beyond the bytes", made_header(0xffffffffu) + whole.substr(62)},
        {"plane of another width", changed(62, u32(4))},
        {"plane of another height", changed(66, u32(1))},
        {"no heights", made_header() + whole.substr(62).replace(0, 12, u32(0) + u32(0))},
        {"crests beyond the bytes", changed(62 + 12 + 2 * 16, u32(0xffffffffu))},
        {"crest right of the grid",
         whole.substr(0, whole.size() - 8) + u32(1) + u32(2) + u32(0) + u32(0) + u32(0) + u32(0)},
        {"crest below the grid",
         whole.substr(0, whole.size() - 8) + u32(1) + u32(0) + u32(2) + u32(0) + u32(0) + u32(0)},
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.fault);
        OCEAN_WAVE_FIELD field;
        EXPECT_FALSE(read_bytes(field, c.bytes));
    }
    for (std::size_t size = 0; size < whole.size(); ++size) {
        OCEAN_WAVE_FIELD field;
        EXPECT_FALSE(read_bytes(field, whole.substr(0, size))) << size << " bytes";
    }
}

// Whatever numbers a field holds, sampling stays within its planes.
TEST(WaveFile, NumbersThatAreNoneCanBeSampled)
{
    float const none = std::numeric_limits<float>::quiet_NaN(), endless = std::numeric_limits<float>::infinity();
    for (float const number : {none, endless, 0.0f, -1.0f, 1e-38f, 3e38f})
        for (std::size_t const offset : {12u, 16u, 26u, 30u, 42u, 50u}) {
            OCEAN_WAVE_FIELD field;
            ASSERT_TRUE(read_bytes(field, changed(offset, f32(number))));
            for (float const at : {0.5f, -3.0f, 1e30f, endless, none}) {
                FRAME_BLEND const blend = field.frame_blend(at);
                EXPECT_LT(blend.frame_a, 2u);
                field.height_at(blend, at, 1);
                field.displacement_at(blend, 1, at);
                field.tile_origin(at, at);
            }
        }
}

TEST(OceanSimulation, FieldsAreLoadedEachForItself)
{
    FRAME_BLEND const start(0, 1, 0);
    for (bool const has_sea : {true, false})
        for (bool const has_swell : {true, false}) {
            BYTES const good = made_file(), bad = "no waves";
            KN::BufferedMemory sea(has_sea ? good.data() : bad.data(), has_sea ? good.size() : bad.size());
            KN::BufferedMemory swell(has_swell ? good.data() : bad.data(), has_swell ? good.size() : bad.size());
            OCEAN_SIMULATION const simulation({}, sea, swell);
            EXPECT_TRUE(simulation.loaded);
            EXPECT_EQ(simulation.sea != nullptr, has_sea);
            EXPECT_EQ(simulation.swell != nullptr, has_swell);
            // 20 metres each.
            EXPECT_NEAR(simulation.surface_height(start, start, {1, 5, 0}, 0.5f), has_sea ? (has_swell ? 30 : 10) : 0,
                        1e-4);
            EXPECT_NEAR(simulation.surface_height(start, start, {1, 5, 0}, 0), has_sea && has_swell ? 20 : 0, 1e-4);
        }
}

#if !defined(__SANITIZE_ADDRESS__)  // which takes more address space than any limit leaves
TEST(OceanSimulation, AFieldWhoseMemoryCannotBeHadIsAbsent)
{
    constexpr std::uint32_t side = 2048;
    BYTES const header = made_header(1).replace(8, 4, u32(side));
    BYTES const large = header + plane(side, BYTES(side * side, 0)) + plane(side, BYTES(2 * side * side, 0)) +
                        plane(0, {}) + u32(0) + u32(0);
    BYTES const small = made_file();
    auto const load = [&] {
        KN::BufferedMemory sea(large.data(), large.size()), swell(small.data(), small.size());
        return std::make_unique<OCEAN_SIMULATION>(OCEAN_SETTINGS(), sea, swell);
    };
    EXPECT_NE(load()->sea, nullptr);

    malloc_trim(0);
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    rlimit const tight = {pages * rlim_t(sysconf(_SC_PAGESIZE)) + large.size() / 2, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
    auto const simulation = load();
    ASSERT_EQ(setrlimit(RLIMIT_AS, &before), 0);
    EXPECT_EQ(simulation->sea, nullptr);
    EXPECT_NE(simulation->swell, nullptr);
}
#endif
