// wave_pictures FOLDER: a choppy sea in a loop of ten seconds: sea.waves (its file), sea_strip.tga (instants two
// seconds apart, lit from the upper left with crests in white; the last is the first again), sea_slopes.tga (the slopes
// of one instant as colours).

#include "foundation/file.h"
#include "support/image/typed_image.h"
#include "support/ocean/ocean_wave_field.h"

#include <algorithm>
#include <iostream>

using namespace SUPPORT;

namespace {

using PICTURE = TYPED_IMAGE<KN::FORMAT_A8R8G8B8>;

constexpr unsigned side = 256, instants = 6;

std::uint8_t level(float brightness) { return std::uint8_t(std::clamp(int(256 * brightness), 0, 255)); }

void draw_instant(PICTURE &strip, unsigned left, OCEAN_WAVE_FIELD const &sea, FRAME_BLEND const &blend)
{
    VECTOR3 const light = normalised(VECTOR3{-1, -1, 0.7f});
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x) {
            float const lit = std::max(0.0f, dot(sea.normal_at(blend, x, y), light));
            strip.set_pixel(left + x, y, {level(0.25f + 0.7f * lit), level(0.1f + 0.8f * lit), level(0.8f * lit), 255});
        }
    for (CREST_POINT const &crest : sea.frames[blend.frame_a].crests) {
        float const strength = crest.strength + (crest.next_strength - crest.strength) * blend.t;
        if (strength > 0.75f)
            strip.set_pixel(left + crest.x, crest.y, {255, 255, 255, 255});
    }
}

// Level water is middle grey in red and green; an eighth of a turn is full.
void draw_slopes(PICTURE &picture, OCEAN_WAVE_FIELD const &sea, FRAME_BLEND const &blend)
{
    PICTURE words(side, side);
    sea.fill_slope_image(blend, words.accessor());
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x) {
            std::uint32_t word;
            std::memcpy(&word, words.accessor().row(y) + 4 * x, sizeof word);
            auto const colour = [](std::uint32_t angle) { return level((float(angle) - 32768) / 16384 + 0.5f); };
            picture.set_pixel(x, y, {0, colour(word >> 16), colour(word & 0xffff), 255});
        }
}

}  // namespace

int main(int count, char **arguments)
{
    if (count != 2) {
        std::cerr << "usage: wave_pictures FOLDER\n";
        return 2;
    }
    KN::String const folder = arguments[1];
    KN::make_directories(folder);  // if that fails, so does what is written there
    KN::String const file = folder + "/sea.waves";
    WAVE_PARAMETERS const breeze = {1, 0.4f, 7, 3e-5f, 0};
    CREST_PARAMETERS const crests = {1, {}, 0, 0.3f, 0.08f};
    OCEAN_WAVE_FIELD const sea({file.c_str(), side, 10, 10, 70, true, true}, breeze, crests, true);
    std::cout << "heights from " << sea.ranges.height_min << " to " << sea.ranges.height_max << " metres\n";

    PICTURE strip(instants * side, side), slopes(side, side);
    for (unsigned i = 0; i < instants; ++i)
        draw_instant(strip, i * side, sea, sea.frame_blend(float(i) * sea.period / (instants - 1)));
    draw_slopes(slopes, sea, sea.frame_blend(0));
    bool const written = strip.write_tga(folder + "/sea_strip.tga", KN::TGA_R8G8B8) &&
                         slopes.write_tga(folder + "/sea_slopes.tga", KN::TGA_R8G8B8);
    if (!written)
        std::cerr << "cannot write into " << folder << '\n';
    return written ? 0 : 1;
}
