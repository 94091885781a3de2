#include "examples/picture.h"

#include "examples/vectors.h"
#include "foundation/finished_file.h"
#include "foundation/image.h"

#include <algorithm>
#include <iostream>

namespace EXAMPLES {

// 0 to 1, the same for the same numbers.
static float hashed(unsigned x, unsigned y, unsigned seed)
{
    unsigned h = x * 0x9e3779b1u + y * 0x85ebca77u + seed * 0xc2b2ae3du;
    h = (h ^ (h >> 15)) * 0x2c1b3c6du;
    h = (h ^ (h >> 12)) * 0x297a2d39u;
    return float((h ^ (h >> 15)) >> 8) / float(1 << 24);
}

float tiling_noise(float u, float v, int columns, int rows, unsigned seed)
{
    float const x = (u - std::floor(u)) * float(columns), y = (v - std::floor(v)) * float(rows);
    int const column = int(x), row = int(y);
    auto const corner = [&](int dx, int dy) {
        return hashed(unsigned((column + dx) % columns), unsigned((row + dy) % rows), seed);
    };
    float const s = smooth_step(0, 1, x - float(column)), t = smooth_step(0, 1, y - float(row));
    float const low = corner(0, 0) + (corner(1, 0) - corner(0, 0)) * s;
    float const high = corner(0, 1) + (corner(1, 1) - corner(0, 1)) * s;
    return low + (high - low) * t;
}

float tiling_clouds(float u, float v, int columns, int rows, int octaves, unsigned seed)
{
    float sum = 0, strength = 0.5f;
    for (int octave = 0; octave < octaves; ++octave, strength /= 2)
        sum += strength * tiling_noise(u, v, columns << octave, rows << octave, seed + unsigned(octave));
    return sum / (1 - 2 * strength / 2);
}

template <class FUNCTION>
static PICTURE painted(FUNCTION const &colour_at)
{
    PICTURE picture;
    for (int y = 0; y < FIELD::size; ++y)
        for (int x = 0; x < FIELD::size; ++x)
            picture.pixels[std::size_t(y * FIELD::size + x)] =
                colour_at((float(x) + 0.5f) / FIELD::size, (float(y) + 0.5f) / FIELD::size);
    return picture;
}

static PICTURE::COLOUR mixed(PICTURE::COLOUR const &a, PICTURE::COLOUR const &b, float share_of_b)
{
    auto const mix = [&](float from, float to) { return from + (to - from) * share_of_b; };
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

PICTURE plaster_picture()
{
    return painted([](float u, float v) {
        float const stains = tiling_clouds(u, v, 4, 4, 3, 1), grain = tiling_noise(u, v, 128, 128, 7);
        return mixed({0.80f, 0.73f, 0.60f}, {0.93f, 0.89f, 0.80f}, 0.75f * stains + 0.25f * grain);
    });
}

PICTURE thatch_picture()
{
    return painted([](float u, float v) {
        float const strands = tiling_noise(u, v, 96, 6, 11), tufts = tiling_clouds(u, v, 12, 4, 3, 12);
        return mixed({0.36f, 0.27f, 0.12f}, {0.83f, 0.69f, 0.38f}, 0.6f * strands + 0.4f * tufts);
    });
}

PICTURE timber_picture()
{
    return painted([](float u, float v) {
        float const bend = 0.05f * tiling_noise(u, v, 2, 2, 21);
        float const grain = tiling_noise(u + bend, v, 48, 3, 22), fibres = tiling_noise(u, v, 128, 8, 23);
        float const plank = u * 4 - std::floor(u * 4);  // four planks side by side
        float const gap = plank < 0.04f || plank > 0.96f ? 0.45f : 1;
        float const shade = (0.6f * grain + 0.4f * fibres) * gap;
        return mixed({0.20f, 0.13f, 0.08f}, {0.52f, 0.36f, 0.22f}, shade);
    });
}

// Courses of blocks with rounded edges: 0 in the joints, towards 1 on the faces.
static FIELD stone_relief()
{
    constexpr int courses = 4, blocks = 2;
    FIELD relief;
    for (int y = 0; y < FIELD::size; ++y)
        for (int x = 0; x < FIELD::size; ++x) {
            float const u = float(x) / FIELD::size, v = float(y) / FIELD::size;
            float const wobble = 0.02f * (tiling_noise(u, v, 16, 16, 31) - 0.5f);
            float const row = (v + wobble) * courses;
            float const shift = int(std::floor(row)) % 2 ? 0.5f : 0.0f;
            float const column = (u + wobble) * blocks + shift;
            float const in_row = row - std::floor(row), in_column = column - std::floor(column);
            float const to_joint = std::min({in_row, 1 - in_row, 2 * in_column, 2 - 2 * in_column});
            float const face = smooth_step(0.02f, 0.16f, to_joint);
            relief.values[std::size_t(y * FIELD::size + x)] = face * (0.8f + 0.2f * tiling_clouds(u, v, 16, 16, 3, 32));
        }
    return relief;
}

PICTURE stone_picture()
{
    FIELD const relief = stone_relief();
    return painted([&](float u, float v) {
        float const face = relief.at(int(u * FIELD::size), int(v * FIELD::size));
        float const tone = 0.5f * tiling_clouds(u, v, 4, 4, 4, 33) + 0.5f * face;
        return mixed({0.26f, 0.25f, 0.24f}, {0.68f, 0.66f, 0.61f}, tone);
    });
}

PICTURE stone_normal_picture()
{
    FIELD const relief = stone_relief();
    PICTURE picture;
    for (int y = 0; y < FIELD::size; ++y)
        for (int x = 0; x < FIELD::size; ++x) {
            constexpr float depth = 6;  // pixels between joint and face
            VEX2_VECTOR const slope = {(relief.at(x - 1, y) - relief.at(x + 1, y)) * depth / 2,
                                       (relief.at(x, y - 1) - relief.at(x, y + 1)) * depth / 2, 1};
            VEX2_VECTOR const normal = unit(slope);
            picture.pixels[std::size_t(y * FIELD::size + x)] = {normal.x / 2 + 0.5f, normal.y / 2 + 0.5f,
                                                                normal.z / 2 + 0.5f};
        }
    return picture;
}

PICTURE grass_picture()
{
    return painted([](float u, float v) {
        float const patches = tiling_clouds(u, v, 6, 6, 3, 41), blades = tiling_noise(u, v, 128, 96, 42);
        return mixed({0.16f, 0.25f, 0.08f}, {0.42f, 0.52f, 0.22f}, 0.6f * patches + 0.4f * blades);
    });
}

PICTURE rock_picture()
{
    return painted([](float u, float v) {
        float const layers = tiling_clouds(u, v, 3, 12, 4, 51);
        return mixed({0.28f, 0.25f, 0.22f}, {0.60f, 0.55f, 0.48f}, layers);
    });
}

PICTURE cloth_picture()
{
    return painted([](float u, float v) {
        float const weave = 0.5f + 0.25f * std::sin(u * 128 * pi) + 0.25f * std::sin(v * 128 * pi);
        return mixed({0.62f, 0.60f, 0.56f}, {0.95f, 0.93f, 0.88f},
                     0.6f * weave + 0.4f * tiling_clouds(u, v, 8, 8, 3, 61));
    });
}

PICTURE bark_picture()
{
    return painted([](float u, float v) {
        float const furrows = tiling_noise(u, v, 24, 3, 71), cracks = tiling_clouds(u, v, 16, 8, 3, 72);
        return mixed({0.13f, 0.10f, 0.08f}, {0.42f, 0.36f, 0.30f}, 0.6f * furrows + 0.4f * cracks);
    });
}

// `count` leaves, each an ellipse with a rib; they may lie over each other, the last on top. The colours are two
// between which the leaves vary.
static PICTURE leaves(int count, PICTURE::COLOUR const &dark, PICTURE::COLOUR const &light)
{
    PICTURE::COLOUR const between = mixed(dark, light, 0.5f);
    PICTURE picture;
    for (PICTURE::COLOUR &pixel : picture.pixels)
        pixel = {between.red, between.green, between.blue, 0};
    // Turning by the golden angle, a leaf comes to lie where none is near.
    constexpr float golden_angle = 2.39996323f, half = FIELD::size / 2.0f;
    for (int leaf = 0; leaf < count; ++leaf) {
        float const angle = golden_angle * float(leaf);
        float const distance = 0.82f * half * std::sqrt((float(leaf) + 0.5f) / float(count));
        float const x0 = half + distance * std::cos(angle), y0 = half + distance * std::sin(angle);
        float const along_x = std::cos(angle * 1.7f), along_y = std::sin(angle * 1.7f);
        float const tone = 0.5f + 0.5f * std::sin(angle * 3.1f);
        constexpr float long_side = 22, short_side = 10;  // pixels
        for (int y = int(y0 - long_side); y <= int(y0 + long_side); ++y)
            for (int x = int(x0 - long_side); x <= int(x0 + long_side); ++x) {
                float const along = (float(x) - x0) * along_x + (float(y) - y0) * along_y;
                float const across = (float(y) - y0) * along_x - (float(x) - x0) * along_y;
                float const lobes = short_side * (1 + 0.18f * std::sin(along * 0.9f));
                float const edge = along * along / (long_side * long_side) + across * across / (lobes * lobes);
                if (edge > 1 || x < 0 || y < 0 || x >= FIELD::size || y >= FIELD::size)
                    continue;
                float const rib = std::fabs(across) < 1 ? 0.25f : 0.0f;
                PICTURE::COLOUR const colour = mixed(dark, light, std::fmin(tone * (1 - 0.4f * edge) + rib, 1));
                picture.pixels[std::size_t(y * FIELD::size + x)] = colour;
            }
    }
    return picture;
}

PICTURE leaves_picture() { return leaves(110, {0.10f, 0.22f, 0.06f}, {0.32f, 0.48f, 0.16f}); }
PICTURE leaves_spring_picture() { return leaves(80, {0.25f, 0.40f, 0.10f}, {0.60f, 0.75f, 0.30f}); }
PICTURE leaves_autumn_picture() { return leaves(95, {0.45f, 0.16f, 0.04f}, {0.85f, 0.55f, 0.12f}); }
PICTURE leaves_winter_picture() { return leaves(9, {0.25f, 0.17f, 0.10f}, {0.42f, 0.30f, 0.18f}); }

bool save_picture(PICTURE const &picture, KN::String const &path)
{
    bool const is_solid =
        std::ranges::all_of(picture.pixels, [](PICTURE::COLOUR const &pixel) { return pixel.opacity == 1; });
    auto const byte_of = [](float part) { return std::uint8_t(std::lround(std::clamp(part, 0.0f, 1.0f) * 255)); };
    std::vector<KN::PIXEL_8888> pixels;  // from the top, unlike those of a PICTURE
    for (std::size_t row = FIELD::size; row-- > 0;)
        for (std::size_t i = row * FIELD::size; i < (row + 1) * FIELD::size; ++i) {
            PICTURE::COLOUR const &pixel = picture.pixels[i];
            pixels.push_back({byte_of(pixel.blue), byte_of(pixel.green), byte_of(pixel.red), byte_of(pixel.opacity)});
        }
    KN::PixelAccessorDescriptor const all{pixels.data(), FIELD::size, FIELD::size, FIELD::size * 4,
                                          KN::FORMAT_A8R8G8B8};
    KN::String const bytes = KN::tga_bytes(all, is_solid ? KN::TGA_R8G8B8 : KN::TGA_A8R8G8B8);
    KN::String error;
    if (KN::write_finished_file(path, bytes, error))
        return true;
    std::cerr << error << '\n';
    return false;
}

}  // namespace EXAMPLES
