#include "support/ocean/ocean_wave_field.h"

#include "support/ocean/wave_crests.h"
#include "support/ocean/wave_encoding.h"
#include "support/ocean/wave_evolution.h"
#include "support/ocean/wave_spectrum.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace SUPPORT {

OCEAN_WAVE_FIELD::OCEAN_WAVE_FIELD(WAVE_FIELD_KIND const &kind, WAVE_PARAMETERS const &waves,
                                   CREST_PARAMETERS const &crests, bool in_a_loop)
    : name(kind.name), grid(kind.grid), size(kind.size), fixed_scale(float(kind.grid) * 4096 / kind.size),
      period(kind.period), frame_count(in_a_loop ? std::uint32_t(std::round(kind.period * kind.frames_per_second)) : 1),
      crests_enabled(kind.crests_enabled), choppy(kind.choppy), looped(in_a_loop), crest_parameters(&crests)
{
    assert(std::has_single_bit(grid) && grid >= 16 && frame_count > 0);
    for (COMPLEX_GRID *waiting : {&height, &slope_x, &slope_y, &displacement_x, &displacement_y})
        waiting->allocate(grid);
    spectrum.resize(grid * grid);
    frames.resize(frame_count);
    for (WAVE_FRAME &frame : frames) {
        frame.heights.allocate(grid, grid);
        frame.slopes.allocate(grid, grid);
        if (choppy)
            frame.displacements.allocate(grid, grid);
    }

    WAVE_NUMBERS const numbers{grid, size};
    frequencies.resize(grid * grid);
    for (std::uint32_t y = 0; y < grid; ++y)
        for (std::uint32_t x = 0; x < grid; ++x) {
            float const kx = numbers.x_of(x), ky = numbers.y_of(x, y);
            float const frequency = wave_frequency(std::sqrt(kx * kx + ky * ky));
            frequencies[y * grid + x] = looped ? looped_frequency(frequency, period) : frequency;
        }
    fill_spectrum(spectrum.data, numbers, waves);
    filled_for = waves;

    if (looped) {
        build_loop();
        return;
    }
    evolve(instant, 0);
    instant.widen(ranges);
    scales.set(ranges);
    encode_instant();
}

void OCEAN_WAVE_FIELD::evolve(WAVE_INSTANT &result, float time)
{
    WAVE_GRIDS const grids{height, slope_x, slope_y, choppy ? &displacement_x : nullptr,
                           choppy ? &displacement_y : nullptr};
    evolve_waves(grids, spectrum.data, frequencies.data, {grid, size}, time);
    result.take(grids);
}

void OCEAN_WAVE_FIELD::build_loop()
{
    // Bytes can be made only when the ranges of all frames are known. All of them are kept until then, as working an
    // instant out again would take several times as long.
    KN::DynamicArray<WAVE_INSTANT> instants;
    instants.resize(frame_count);
    for (std::uint32_t i = 0; i < frame_count; ++i) {
        evolve(instants[i], float(i) / float(frame_count) * period);
        instants[i].widen(ranges);
    }
    scales.set(ranges);
    for (std::uint32_t i = 0; i < frame_count; ++i) {
        encode_frame(frames[i], instants[i], ranges, scales);
        instants[i] = {};
    }

    if (crests_enabled) {
        for (WAVE_FRAME &frame : frames)
            collect_crests(frame, ranges, scales, crest_parameters->crest_threshold);
        float const fade = crest_parameters->fade_time / (period / float(frame_count));
        fade_crests(frames, grid, fade > 0 ? std::uint32_t(std::min(fade, 1e9f)) : 0);
    }
    for (COMPLEX_GRID *done : {&height, &slope_x, &slope_y, &displacement_x, &displacement_y})
        done->free();
    spectrum.clear();
    frequencies.clear();
    write(name);
}

void OCEAN_WAVE_FIELD::encode_instant()
{
    encode_frame(frames[0], instant, ranges, scales);
    frames[0].crests.clear();
    collect_crests(frames[0], ranges, scales, crest_parameters->crest_threshold);
}

void OCEAN_WAVE_FIELD::update(WAVE_PARAMETERS const &waves, float time)
{
    if (looped)
        return;
    if (!(waves == filled_for)) {  // which would give the same spectrum again
        fill_spectrum(spectrum.data, {grid, size}, waves);
        filled_for = waves;
    }
    evolve(instant, time);
    encode_instant();
}

FRAME_BLEND OCEAN_WAVE_FIELD::frame_blend(float time) const
{
    float position = std::fmod(time, period) * float(frame_count) / period;
    if (position < 0)
        position += float(frame_count);
    if (!(position >= 0 && position < float(frame_count)))  // no number, or rounded up to the end
        position = 0;
    std::uint32_t const frame = std::uint32_t(position);
    return {frame, (frame + 1) % frame_count, position - float(frame)};
}

}  // namespace SUPPORT
