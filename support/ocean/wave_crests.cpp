#include "support/ocean/wave_crests.h"

#include "foundation/containers.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace SUPPORT {

namespace {

constexpr float widest_displacement = 0.404f;  // along x; beyond it the water rolls over

// The negated displacement along an axis that each byte stands for.
using DECODED = std::array<float, 256>;

DECODED negated(float unit, float least)
{
    DECODED values;
    for (unsigned byte = 0; byte < values.size(); ++byte)
        values[byte] = -(float(byte) * unit + least);
    return values;
}

// How much sharper the water is pushed here than on the side that it is pushed to; 0 if it is not pushed together.
float pushed_together(float here, float after, float before)
{
    if (here > 0)
        return after < 0 ? here - after : 0;
    return before > 0 ? before - here : 0;
}

bool by_column(CREST_POINT const &a, CREST_POINT const &b) { return a.x < b.x; }

// To between 0 and 1, around the most frequent strength.
void spread_strengths(KN::DynamicArray<CREST_POINT> &crests)
{
    std::array<unsigned, 20> bins = {};
    for (CREST_POINT const &crest : crests) {
        float const bin = crest.strength * 19.0f;
        ++bins[bin > 0 ? unsigned(std::min(bin, 19.0f)) : 0];  // crests that are all alike are not limited to 1
    }
    float const centre = float(std::max_element(bins.begin(), bins.end()) - bins.begin()) * 0.05f;
    float const low = std::max(centre - 0.2f, 0.0f), high = std::min(centre + 0.2f, 1.0f);
    for (CREST_POINT &crest : crests)
        crest.strength = std::clamp((crest.strength - low) / (high - low), 0.0f, 1.0f) * 0.5f + 0.5f;
}

// Which cells of which frames hold a crest.
class CREST_CELLS {
public:
    CREST_CELLS(KN::DynamicArray<WAVE_FRAME> const &frames, std::uint32_t grid)
        : side(grid), held(std::size_t(frames.count) * grid * grid)
    {
        for (std::uint32_t i = 0; i < frames.count; ++i)
            for (CREST_POINT const &crest : frames[i].crests)
                held[index(i, crest)] = true;
    }

    bool has(std::uint32_t frame, CREST_POINT const &crest) const { return held[index(frame, crest)]; }
    void add(std::uint32_t frame, CREST_POINT const &crest) { held[index(frame, crest)] = true; }

private:
    std::size_t index(std::uint32_t frame, CREST_POINT const &crest) const
    {
        return (std::size_t(frame) * side + crest.y) * side + crest.x;
    }

    std::uint32_t side;
    std::vector<bool> held;
};

}  // namespace

void collect_crests(WAVE_FRAME &frame, WAVE_RANGES const &ranges, WAVE_SCALES const &scales, float threshold)
{
    WAVE_PLANE<BYTE_PAIR> const &plane = frame.displacements;
    DECODED const x_of = negated(scales.displacement_unit_x, ranges.displacement_min_x);
    DECODED const y_of = negated(scales.displacement_unit_y, ranges.displacement_min_y);

    std::uint32_t const n = plane.width;
    KN_STD::VECTOR<CREST_POINT> found;  // row by row, as the plane lies in memory
    for (std::uint32_t y = 0; y < plane.rows; ++y) {
        BYTE_PAIR const *const row = &plane.at(0, y);
        BYTE_PAIR const *const above = &plane.at(0, y == 0 ? plane.rows - 1 : y - 1);
        BYTE_PAIR const *const below = &plane.at(0, y + 1 == plane.rows ? 0 : y + 1);
        for (std::uint32_t x = 0; x < n; ++x) {
            float const dx = x_of[row[x].x], dy = y_of[row[x].y];
            if (std::abs(dx) > widest_displacement)
                continue;
            float const right = x_of[row[x + 1 == n ? 0 : x + 1].x], left = x_of[row[x == 0 ? n - 1 : x - 1].x];
            float const strength =
                std::max(pushed_together(dx, right, left), pushed_together(dy, y_of[below[x].y], y_of[above[x].y]));
            if (strength > threshold)
                found.push_back({x, y, strength, 0});
        }
    }
    std::stable_sort(found.begin(), found.end(), by_column);

    float weakest = 1000, strongest = 0;
    for (CREST_POINT const &crest : found) {
        weakest = std::min(weakest, crest.strength);
        strongest = std::max(strongest, crest.strength);
    }
    for (CREST_POINT &crest : found) {
        if (weakest != strongest)
            crest.strength = (crest.strength - weakest) / (strongest - weakest);
        frame.crests.append(crest);
    }
}

void fade_crests(KN::DynamicArray<WAVE_FRAME> &frames, std::uint32_t grid, std::uint32_t fade_frames)
{
    for (WAVE_FRAME &frame : frames)
        spread_strengths(frame.crests);

    CREST_CELLS cells(frames, grid);
    KN_STD::VECTOR<float> following(std::size_t(grid) * grid);  // strengths in the frame after the one at hand
    for (std::uint32_t i = 0; i < frames.count; ++i) {
        std::uint32_t const next = (i + 1) % frames.count;
        auto const follow = [&](CREST_POINT const &crest) {
            following[std::size_t(crest.y) * grid + crest.x] = crest.strength;
        };
        for (CREST_POINT const &crest : frames[next].crests)
            follow(crest);

        // The walk ends where it began at the latest, so this frame's crests do not become more.
        for (CREST_POINT &crest : frames[i].crests) {
            float upper = crest.strength;
            float const step = upper / float(fade_frames);
            float lower = upper - step;
            std::uint32_t before = i;
            for (std::uint32_t walked = 0; walked < fade_frames; ++walked) {
                before = before == 0 ? frames.count - 1 : before - 1;
                if (cells.has(before, crest))
                    break;
                CREST_POINT const led_up{crest.x, crest.y, lower, upper};
                frames[before].crests.append(led_up);
                cells.add(before, led_up);
                if (before == next)
                    follow(led_up);
                upper -= step;
                lower -= step;
            }
            if (cells.has(next, crest))
                crest.next_strength = following[std::size_t(crest.y) * grid + crest.x];
        }
    }
}

}  // namespace SUPPORT
