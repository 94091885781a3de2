#include "support/ocean/wave_crests.h"

#include "foundation/containers.h"
#include "support/maths/lanes.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <utility>

namespace SUPPORT {

namespace {

constexpr float widest_displacement = 0.404f;  // along x; beyond it the water rolls over

// The negated displacements of a row.
struct PUSHES {
    KN_STD::VECTOR<float> x;  // with the last cell's in front and the first cell's behind
    KN_STD::VECTOR<float> y;

    explicit PUSHES(std::uint32_t n) : x(n + 2), y(n) {}

    void decode(BYTE_PAIR const *row, WAVE_RANGES const &ranges, WAVE_SCALES const &scales)
    {
        std::size_t const n = y.size();
        float *const to_x = x.data() + 1, *const to_y = y.data();
        float const unit_x = scales.displacement_unit_x, unit_y = scales.displacement_unit_y;
        float const least_x = ranges.displacement_min_x, least_y = ranges.displacement_min_y;
        for (std::size_t i = 0; i < n; ++i) {
            to_x[i] = -(float(row[i].x) * unit_x + least_x);
            to_y[i] = -(float(row[i].y) * unit_y + least_y);
        }
        x.front() = x[n];
        x.back() = x[1];
    }
};

// How much sharper the water is pushed here than on the side that it is pushed to; 0 if it is not pushed together.
FOUR_FLOATS pushed_together(FOUR_FLOATS const &here, float const *after_cells, float const *before_cells)
{
    FOUR_FLOATS after, before;
    load_lanes(after, after_cells);
    load_lanes(before, before_cells);
    FOUR_FLOATS const there = here > 0 ? after : before;
    FOUR_FLOATS const against = here > 0 ? -there : there;
    FOUR_FLOATS const apart = here > 0 ? here - there : there - here;
    return against > 0 ? apart : FOUR_FLOATS{};
}

// Of each cell of a row, the greater of both axes.
void find_strengths(float *strengths, PUSHES const &row, PUSHES const &above, PUSHES const &below)
{
    for (std::size_t i = 0; i < row.y.size(); i += 4) {
        FOUR_FLOATS x, y;
        load_lanes(x, &row.x[i + 1]);
        load_lanes(y, &row.y[i]);
        FOUR_FLOATS const along_x = pushed_together(x, &row.x[i + 2], &row.x[i]);
        FOUR_FLOATS const along_y = pushed_together(y, &below.y[i], &above.y[i]);
        store_lanes(along_x > along_y ? along_x : along_y, strengths + i);
    }
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
    KN_STD::VECTOR<bool> held;
};

}  // namespace

void collect_crests(WAVE_FRAME &frame, WAVE_RANGES const &ranges, WAVE_SCALES const &scales, float threshold)
{
    WAVE_PLANE<BYTE_PAIR> const &plane = frame.displacements;
    if (plane.cells.empty())
        return;
    assert(plane.width % 4 == 0);
    PUSHES above(plane.width), row(plane.width), below(plane.width);
    above.decode(&plane.at(0, plane.rows - 1), ranges, scales);
    row.decode(&plane.at(0, 0), ranges, scales);
    KN_STD::VECTOR<float> strengths(plane.width);
    KN_STD::VECTOR<CREST_POINT> found;  // row by row, as the plane lies in memory
    for (std::uint32_t y = 0; y < plane.rows; ++y) {
        below.decode(&plane.at(0, y + 1 == plane.rows ? 0 : y + 1), ranges, scales);
        find_strengths(strengths.data(), row, above, below);
        for (std::uint32_t x = 0; x < plane.width; ++x)
            if (strengths[x] > threshold && !(std::abs(row.x[x + 1]) > widest_displacement))
                found.push_back({x, y, strengths[x], 0});
        std::swap(above, row);
        std::swap(row, below);
    }
    std::stable_sort(found.begin(), found.end(), by_column);

    float weakest = 1000, strongest = 0;
    for (CREST_POINT const &crest : found) {
        weakest = std::min(weakest, crest.strength);
        strongest = std::max(strongest, crest.strength);
    }
    frame.crests.reserve(frame.crests.count + unsigned(found.size()));
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
