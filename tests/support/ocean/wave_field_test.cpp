#include "foundation/file.h"
#include "foundation/image.h"
#include "made_field.h"
#include "support/maths/lanes.h"
#include "support/ocean/ocean_simulation.h"
#include "support/ocean/wave_spectrum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <memory>

using namespace SUPPORT;

namespace {

constexpr std::uint32_t side = 16;
constexpr double tile = 20, loop = 4;
WAVE_PARAMETERS const wind = {0.8f, 0.6f, 6, 0.02f, 0};
CREST_PARAMETERS const crests = {1, {}, 0, 0.5f, 0.05f};

std::string const place = testing::TempDir() + "/wave_field";
WAVE_FIELD_KIND const kind = {place.c_str(), side, float(loop), 5, float(tile), true, true};

struct WAVE {
    double kx, ky, k;
};

// 0 to 7, then -7 to 0; in the left half of the columns the rows change over one earlier.
WAVE wave_of(std::uint32_t x, std::uint32_t y)
{
    int const i = x < 8 ? int(x) : int(x) - 15;
    int const j = y < (x < 8 ? 7u : 8u) ? int(y) : int(y) - 15;
    return {2 * M_PI * i / tile, 2 * M_PI * j / tile, 2 * M_PI * std::hypot(i, j) / tile};
}

struct SURFACE {
    double height = 0, slope_x = 0, slope_y = 0, aside_x = 0, aside_y = 0;
};

// All waves summed up at one cell.
SURFACE surface_at(COMPLEX const *spectrum, bool looped, double time, std::uint32_t cell_x, std::uint32_t cell_y)
{
    SURFACE sum;
    for (std::uint32_t y = 0; y < side; ++y)
        for (std::uint32_t x = 0; x < side; ++x) {
            WAVE const wave = wave_of(x, y);
            double w = std::sqrt(wave.k * 9.88);
            if (looped)
                w = 2 * M_PI * std::round(loop * w / (2 * M_PI)) / loop;
            COMPLEX const &h0 = spectrum[y * side + x];
            std::complex<double> const turned =
                std::complex<double>(double(h0.real), double(h0.imaginary)) * std::polar(1.0, w * time);
            std::complex<double> const here =
                2 * turned.real() * std::polar(1.0, 2 * M_PI * double(x * cell_x + y * cell_y) / side);
            std::complex<double> const i(0, 1);
            sum.height += here.real();
            sum.slope_x += (i * wave.kx * here).real();
            sum.slope_y += (i * wave.ky * here).real();
            if (wave.k > 0) {
                sum.aside_x += (i * (-wave.kx / wave.k) * here).real();
                sum.aside_y += (i * (-wave.ky / wave.k) * here).real();
            }
        }
    return sum;
}

double angle_of(double slope) { return (std::atan(-slope) + M_PI) / (2 * M_PI) * 65535; }

bool same_bytes(WAVE_FRAME const &a, WAVE_FRAME const &b)
{
    auto const same = [](auto const &p, auto const &q) {
        return p.count == q.count && (p.empty() || std::memcmp(p.data, q.data, p.count * sizeof p[0]) == 0);
    };
    return same(a.heights.cells, b.heights.cells) && same(a.slopes.cells, b.slopes.cells) &&
           same(a.displacements.cells, b.displacements.cells) && same(a.crests, b.crests);
}

}  // namespace

// Marsaglia's method over the generator, column by column, and the power of each wave.
TEST(WaveSpectrum, IsThatOfTheFormula)
{
    std::vector<COMPLEX> cells(side * side);
    fill_spectrum(cells.data(), {side, float(tile)}, wind);
    std::uint32_t state = 0;
    auto const uniform = [&] {
        state = state * 214013 + 2531011;
        return double(state >> 16) / 65535 * 2 - 1;
    };
    unsigned still = 0;
    for (std::uint32_t x = 0; x < side; ++x)
        for (std::uint32_t y = 0; y < side; ++y) {
            SCOPED_TRACE(testing::Message() << x << ", " << y);
            COMPLEX const &cell = cells[y * side + x];
            WAVE const wave = wave_of(x, y);
            if (wave.k == 0) {
                ++still;
                EXPECT_EQ(cell.real, 0);
                EXPECT_EQ(cell.imaginary, 0);
                continue;
            }
            double u, v, r;
            do {
                u = uniform();
                v = uniform();
                r = u * u + v * v;
            } while (r >= 1);
            double const longest = 36 / 9.88, along = (wave.kx * 0.8 + wave.ky * 0.6) / wave.k;
            double const power = 0.02 * std::exp(-1 / std::pow(wave.k * longest, 2)) / std::pow(wave.k, 4) * along *
                                 along * std::exp(-std::pow(longest / 1000 * wave.k, 2));
            double const size = std::sqrt(power * -2 * std::log(r) / r / 2);
            EXPECT_NEAR(cell.real, size * u, 1e-4 * size + 1e-12);  // across the wind, 0 but for rounding
            EXPECT_NEAR(cell.imaginary, size * v, 1e-4 * size + 1e-12);
        }
    EXPECT_EQ(still, 4u) << "all four corners";
}

TEST(WaveField, IsTheSumOfItsWaves)
{
    for (bool const wide : {false, true}) {
        allow_eight_lanes(wide);
        OCEAN_WAVE_FIELD field(kind, wind, crests, false);
        std::vector<std::uint32_t> words(side * side);
        for (float const time : {0.0f, 2.75f, -40.0f, 20000.0f}) {  // the last beyond what the polynomials serve
            field.update(wind, time);
            FRAME_BLEND const now = field.frame_blend(time);
            field.fill_slope_image(now, {words.data(), side, side, side * 4, 7});
            for (std::uint32_t cell = 0; cell < side * side; cell += 7) {
                SCOPED_TRACE(testing::Message() << cell << " at " << time << (wide ? " wide" : ""));
                std::uint32_t const x = cell % side, y = cell / side;
                SURFACE const surface = surface_at(field.spectrum.data, false, double(time), x, y);
                double const close = time > 1000 ? 2e-2 : 1e-4;  // phases have 24 bits
                EXPECT_NEAR(field.height.cells[cell].real, surface.height, close);
                EXPECT_NEAR(field.displacement_x.cells[cell].real, surface.aside_x, close);
                EXPECT_NEAR(field.displacement_y.cells[cell].real, surface.aside_y, close);
                EXPECT_NEAR(words[cell] & 0xffff, angle_of(surface.slope_x) - 0.5, 0.6 + 1e4 * close);
                EXPECT_NEAR(words[cell] >> 16, angle_of(surface.slope_y) - 0.5, 0.6 + 1e4 * close);
                VECTOR3 const normal = field.normal_at(now, x + side, y);
                EXPECT_NEAR(normal.x / normal.z, -surface.slope_x, 2 * close);
                EXPECT_NEAR(normal.y / normal.z, -surface.slope_y, 2 * close);
                if (time == 0) {  // a later instant may reach beyond the range of the first
                    double const step = double(field.scales.height_unit);
                    EXPECT_NEAR(field.height_at(now, float(x * tile / side), float(y * tile / side)),
                                surface.height - step / 2, step * 0.51);
                }
            }
        }
    }
    allow_eight_lanes(true);
}

// What comes after the last frame is the first.
TEST(WaveField, ALoopClosesAndIsTheSumOfSnappedWaves)
{
    OCEAN_WAVE_FIELD const field(kind, wind, crests, true);
    OCEAN_WAVE_FIELD const instant(kind, wind, crests, false);  // for its spectrum, which is the same
    ASSERT_EQ(field.frame_count, 20u);
    EXPECT_FALSE(field.height.is_allocated() || !field.spectrum.empty());
    double const step = double(field.scales.height_unit);
    for (std::uint32_t frame = 0; frame <= field.frame_count; ++frame)
        for (std::uint32_t cell = 0; cell < side * side; cell += 37) {
            SCOPED_TRACE(testing::Message() << cell << " in frame " << frame);
            std::uint32_t const x = cell % side, y = cell / side;
            SURFACE const surface = surface_at(instant.spectrum.data, true, frame * loop / 20, x, y);
            FRAME_BLEND const blend = field.frame_blend(float(frame * loop / 20) + 1e-3f);
            EXPECT_EQ(blend.frame_a, frame % 20);
            FRAME_BLEND const exact(blend.frame_a, blend.frame_b, 0);
            float const at_x = float(x * tile / side), at_y = float(y * tile / side);
            EXPECT_NEAR(field.height_at(exact, at_x, at_y), surface.height - step / 2, step * 0.51);
            VECTOR3 const aside = field.displacement_at(exact, at_x, at_y);
            EXPECT_NEAR(aside.x, surface.aside_x - double(field.scales.displacement_unit_x) / 2,
                        double(field.scales.displacement_unit_x) * 0.51);
            EXPECT_NEAR(field.slope_angles_at(exact, x, y).y, angle_of(surface.slope_y),
                        double(field.scales.slope_unit_y) + 1.5);
        }
}

TEST(WaveField, EveryBuildGivesTheSameBytesAndItsFile)
{
    OCEAN_WAVE_FIELD const field(kind, wind, crests, true);
    allow_eight_lanes(false);
    OCEAN_WAVE_FIELD const again(kind, wind, crests, true);
    allow_eight_lanes(true);
    OCEAN_WAVE_FIELD loaded;
    KN::FileIn file;
    ASSERT_TRUE(file.open(KN::String(place), true));
    ASSERT_TRUE(loaded.read(file));
    unsigned points = 0;
    for (std::uint32_t i = 0; i < field.frame_count; ++i) {
        EXPECT_TRUE(same_bytes(field.frames[i], again.frames[i])) << i;
        EXPECT_TRUE(same_bytes(field.frames[i], loaded.frames[i])) << i;
        points += field.frames[i].crests.count;
    }
    EXPECT_GT(points, field.frame_count);
    for (float const time : {0.1f, 1.234f, 3.99f}) {
        FRAME_BLEND const blend = field.frame_blend(time);
        EXPECT_EQ(field.height_at(blend, time, 7), loaded.height_at(blend, time, 7));
        EXPECT_EQ(field.displacement_at(blend, 7, time), loaded.displacement_at(blend, 7, time));
    }
    std::uint32_t const before = field.frames[0].heights.at(3, 3);
    const_cast<OCEAN_WAVE_FIELD &>(field).update(wind, 1);
    EXPECT_EQ(field.frames[0].heights.at(3, 3), before) << "a loop is not updated";
}

TEST(WaveField, FlatWaterAndForeignWindAreHarmless)
{
    WAVE_PARAMETERS flat = wind;
    flat.amplitude = 0;
    OCEAN_WAVE_FIELD field(kind, flat, crests, false);
    FRAME_BLEND const now(0, 0, 0);
    EXPECT_EQ(field.height_at(now, 3, 4), 0);
    EXPECT_EQ(field.displacement_at(now, 3, 4), VECTOR3());
    EXPECT_EQ(field.slope_angles_at(now, 3, 4).x, 32767);
    EXPECT_TRUE(field.frames[0].crests.empty());

    // The ranges are those of the build: here nothing.
    field.update(wind, 1);
    EXPECT_EQ(field.height_at(now, 3, 4), 0);
    EXPECT_NE(field.height.cells[5].real, 0);
    field.update({NAN, NAN, NAN, NAN, 0}, NAN);
    EXPECT_EQ(field.frames[0].heights.at(1, 1), 0);
}

TEST(OceanSimulation, UpdatesBothFieldsAndKeepsItsOwnCrests)
{
    OCEAN_SETTINGS settings{wind, {0, 1, 15, 0.01f, 0}, crests, {}};
    OCEAN_SIMULATION simulation(settings);
    settings.crests.crest_threshold = 1000;
    EXPECT_FALSE(simulation.loaded);
    EXPECT_EQ(simulation.sea->grid, 256u);
    EXPECT_EQ(simulation.swell->size, 800);
    WAVE_FRAME const sea = simulation.sea->frames[0];
    float const swell = simulation.swell->height_at({0, 0, 0}, 100, 100);
    EXPECT_FALSE(sea.crests.empty());
    simulation.update(settings, 3);
    EXPECT_FALSE(same_bytes(sea, simulation.sea->frames[0]));
    EXPECT_NE(simulation.swell->height_at({0, 0, 0}, 100, 100), swell);
    simulation.update(settings, 0);
    EXPECT_TRUE(same_bytes(sea, simulation.sea->frames[0]));
    EXPECT_EQ(simulation.swell->height_at({0, 0, 0}, 100, 100), swell);
}
