// A point lies in a cell of the lattice between two planes of constant x. The four corners of the cell on one plane are
// worked on at once, in four lanes: (y, z), (y + 1, z), (y, z + 1), (y + 1, z + 1). A row of points along x meets each
// plane once, and blends four or eight points at a time.

#include "support/numeric/gradient_noise.h"

#include "support/maths/lanes.h"
#include "support/numeric/random_state.h"

#include <algorithm>
#include <emmintrin.h>

namespace SUPPORT {

VECTOR4 const GRADIENT_NOISE::gradients[16] = {
    {1, 1, 0, 0}, {-1, 1, 0, 0}, {1, -1, 0, 0}, {-1, -1, 0, 0},  //
    {1, 0, 1, 0}, {-1, 0, 1, 0}, {1, 0, -1, 0}, {-1, 0, -1, 0},  //
    {0, 1, 1, 0}, {0, -1, 1, 0}, {0, 1, -1, 0}, {0, -1, -1, 0},  //
    {1, 1, 0, 0}, {-1, 1, 0, 0}, {0, -1, 1, 0}, {0, -1, -1, 0},
};

namespace {

// a > b ? a : b and a < b ? a : b, of which compilers do not make the one instruction that it is.
template <class F>
KERNEL void greater(F &result, F const &a, F const &b)
{
    result = a > b ? a : b;
}
template <class F>
KERNEL void lesser(F &result, F const &a, F const &b)
{
    result = a < b ? a : b;
}
template <>
KERNEL void greater(FOUR_FLOATS &result, FOUR_FLOATS const &a, FOUR_FLOATS const &b)
{
    result = _mm_max_ps(a, b);
}
template <>
KERNEL void lesser(FOUR_FLOATS &result, FOUR_FLOATS const &a, FOUR_FLOATS const &b)
{
    result = _mm_min_ps(a, b);
}

// A coordinate in each lane: the whole number below it, and how far it is from that one and from the next.
template <class F>
struct PLACE {
    decltype(F{} < F{}) whole;
    F offset, offset_from_next;
};

template <class F>
KERNEL void find_place(PLACE<F> &place, F const &scaled)
{
    F const one = F{} + 1, least = F{} - 2147483648.0f, most = F{} + 2147483520.0f;
    F p;
    greater(p, scaled, least);  // least for what is no number
    lesser(p, p, most);
    auto const truncated = __builtin_convertvector(p, decltype(F{} < F{}));
    F const floored = __builtin_convertvector(truncated, F);
    auto const above = floored > p;  // a negative number, all ones
    F const whole = floored - (above ? one : F{});
    place.whole = truncated + above;
    place.offset = p - whole;
    place.offset_from_next = p - (whole + one);
}

template <class F>
KERNEL void fade(F &weight, F const &t)
{
    lesser(weight, ((6 * t - 15) * t + 10) * (t * t * t), F{} + 1);  // never below 0
}

__m128 fade_derivative(__m128 t)
{
    __m128 const square = _mm_mul_ps(t, t);
    __m128 const rest = _mm_add_ps(_mm_sub_ps(square, _mm_mul_ps(_mm_set1_ps(2), t)), _mm_set1_ps(1));
    return _mm_mul_ps(_mm_mul_ps(_mm_set1_ps(30), square), rest);
}

__m128 blend(__m128 a, __m128 b, __m128 weight) { return _mm_add_ps(a, _mm_mul_ps(_mm_sub_ps(b, a), weight)); }

template <int lane>
__m128 all(__m128 v)
{
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(lane, lane, lane, lane));
}

// The low 16 bits of a lane.
template <int lane>
std::uint32_t word(__m128i v)
{
    return std::uint32_t(_mm_extract_epi16(v, 2 * lane));
}

}  // namespace

// The lines of the lattice on both sides of a point, wrapped by the period and cut down to the size of the permutation.
struct GRADIENT_NOISE::LINES {
    __m128i before, after;

    LINES(GRADIENT_NOISE const &noise, __m128i whole)
    {
        __m128i const next = _mm_add_epi32(whole, _mm_set1_epi32(1));
        if (noise.wraps_by_mask) {
            __m128i const mask = _mm_load_si128(reinterpret_cast<__m128i const *>(noise.wrap_mask));
            before = _mm_and_si128(whole, mask);
            after = _mm_and_si128(next, mask);
        } else {
            before = remainders(noise, whole);
            after = remainders(noise, next);
        }
    }

private:
    static __m128i remainders(GRADIENT_NOISE const &noise, __m128i numbers)
    {
        alignas(16) std::uint32_t lanes[4];
        _mm_store_si128(reinterpret_cast<__m128i *>(lanes), numbers);
        for (int axis = 0; axis < 3; ++axis)
            lanes[axis] = lanes[axis] % noise.period[axis] & 255;
        return _mm_load_si128(reinterpret_cast<__m128i const *>(lanes));
    }
};

// The cells with the same y and z, and the way to a point from each of their four lines along x.
struct GRADIENT_NOISE::ROW_OF_CELLS {
    std::uint32_t y[2], z[2];
    __m128 dy, dz;

    // `place` has x, y, z in its first three lanes.
    ROW_OF_CELLS(LINES const &lines, PLACE<FOUR_FLOATS> const &place)
        : y{word<1>(lines.before), word<1>(lines.after)}, z{word<2>(lines.before), word<2>(lines.after)}
    {
        __m128 const both_y = _mm_shuffle_ps(place.offset, place.offset_from_next, _MM_SHUFFLE(1, 1, 1, 1));
        dy = _mm_shuffle_ps(both_y, both_y, _MM_SHUFFLE(2, 0, 2, 0));
        dz = _mm_shuffle_ps(place.offset, place.offset_from_next, _MM_SHUFFLE(2, 2, 2, 2));
    }
};

// The gradients of a cell's four corners on one of its planes of constant x.
struct GRADIENT_NOISE::CORNERS {
    __m128 x, y, z;

    CORNERS(GRADIENT_NOISE const &noise, ROW_OF_CELLS const &row, std::uint32_t line_x)
    {
        std::uint32_t const *const mixed = noise.permutation;
        std::uint32_t const plane = mixed[line_x];
        std::uint32_t const line[2] = {mixed[(plane + row.y[0]) & 255], mixed[(plane + row.y[1]) & 255]};
        auto const gradient = [&](unsigned side_y, unsigned side_z) {
            return _mm_load_ps(&noise.shuffled_gradients[(line[side_y] + row.z[side_z]) & 255].x);
        };
        x = gradient(0, 0);
        y = gradient(1, 0);
        z = gradient(0, 1);
        __m128 fourth = gradient(1, 1);
        _MM_TRANSPOSE4_PS(x, y, z, fourth);
    }
};

// The values that the four corners give along a row of cells.
struct GRADIENT_NOISE::PLANE {
    __m128 gradient_x, y_part, z_part;

    PLANE(ROW_OF_CELLS const &row, CORNERS const &corners)
        : gradient_x(corners.x), y_part(_mm_mul_ps(row.dy, corners.y)), z_part(_mm_mul_ps(row.dz, corners.z))
    {}

    // Each gradient times the way from its corner.
    __m128 at(__m128 dx) const { return _mm_add_ps(_mm_add_ps(_mm_mul_ps(dx, gradient_x), y_part), z_part); }
};

GRADIENT_NOISE::GRADIENT_NOISE(VECTOR3 const &given_scale, std::uint32_t period_x, std::uint32_t period_y,
                               std::uint32_t period_z)
    : scale(given_scale), period{period_x, period_y, period_z}
{
    scale_lanes[0] = scale.x;
    scale_lanes[1] = scale.y;
    scale_lanes[2] = scale.z;
    for (int axis = 0; axis < 3; ++axis) {
        wraps_by_mask &= (period[axis] & (period[axis] - 1)) == 0;
        wrap_mask[axis] = (period[axis] - 1) & 255;
    }
    RANDOM_STATE random{25492};
    for (unsigned i = 0; i < 256; ++i) {
        permutation[i] = next_random(random) & 255;
        shuffled_gradients[i] = gradients[permutation[i] & 15];
    }
}

float GRADIENT_NOISE::noise(float x, float y, float z) const
{
    PLACE<FOUR_FLOATS> place;
    find_place(place, FOUR_FLOATS{x, y, z, z} * _mm_load_ps(scale_lanes));
    FOUR_FLOATS weight;
    fade(weight, place.offset);
    LINES const lines(*this, __m128i(place.whole));
    ROW_OF_CELLS const row(lines, place);
    CORNERS const a(*this, row, word<0>(lines.before)), b(*this, row, word<0>(lines.after));

    __m128 const value_a = PLANE(row, a).at(all<0>(place.offset));
    __m128 const value_b = PLANE(row, b).at(all<0>(place.offset_from_next));
    __m128 const edges = blend(value_a, value_b, all<0>(weight));
    __m128 const next_edges = _mm_shuffle_ps(edges, edges, _MM_SHUFFLE(3, 3, 1, 1));
    __m128 const faces = blend(edges, next_edges, all<1>(weight));  // in lanes 0 and 2
    return _mm_cvtss_f32(blend(faces, _mm_movehl_ps(faces, faces), all<2>(weight)));
}

float GRADIENT_NOISE::noise_with_derivative(VECTOR3 &derivative, float x, float y, float z) const
{
    PLACE<FOUR_FLOATS> place;
    find_place(place, FOUR_FLOATS{x, y, z, z} * _mm_load_ps(scale_lanes));
    FOUR_FLOATS weight;
    fade(weight, place.offset);
    __m128 const slope = fade_derivative(place.offset);
    LINES const lines(*this, __m128i(place.whole));
    ROW_OF_CELLS const row(lines, place);
    CORNERS const a(*this, row, word<0>(lines.before)), b(*this, row, word<0>(lines.after));

    // Blend along x: of the four edges first the values, then the derivatives by x, y and z; turned over, each edge
    // holds its value and derivatives in its lanes.
    __m128 const value_a = PLANE(row, a).at(all<0>(place.offset));
    __m128 const value_b = PLANE(row, b).at(all<0>(place.offset_from_next));
    __m128 const weight_x = all<0>(weight);
    __m128 edge0 = blend(value_a, value_b, weight_x);
    __m128 edge1 = _mm_add_ps(blend(a.x, b.x, weight_x), _mm_mul_ps(_mm_sub_ps(value_b, value_a), all<0>(slope)));
    __m128 edge2 = blend(a.y, b.y, weight_x);
    __m128 edge3 = blend(a.z, b.z, weight_x);
    _MM_TRANSPOSE4_PS(edge0, edge1, edge2, edge3);

    // Along y and z: the derivative in that direction gets the slope of the blend itself in addition.
    __m128 const slope_y = _mm_and_ps(all<1>(slope), _mm_castsi128_ps(_mm_setr_epi32(0, 0, -1, 0)));
    __m128 const slope_z = _mm_and_ps(all<2>(slope), _mm_castsi128_ps(_mm_setr_epi32(0, 0, 0, -1)));
    auto const sloping_blend = [](__m128 from, __m128 to, __m128 by, __m128 slope_in_lane) {
        return _mm_add_ps(blend(from, to, by), _mm_mul_ps(all<0>(_mm_sub_ps(to, from)), slope_in_lane));
    };
    __m128 const face0 = sloping_blend(edge0, edge1, all<1>(weight), slope_y);
    __m128 const face1 = sloping_blend(edge2, edge3, all<1>(weight), slope_y);
    __m128 const result = sloping_blend(face0, face1, all<2>(weight), slope_z);

    alignas(16) float lanes[4];
    _mm_store_ps(lanes, result);
    derivative = {lanes[1] * scale.x, lanes[2] * scale.y, lanes[3] * scale.z};
    return lanes[0];
}

namespace {

// Points of a row: the cell of each, how far along it each lies, and the weight of its far side.
template <class F>
struct POINTS {
    std::uint32_t cells[lanes_of<F>];
    float offsets[lanes_of<F>], offsets_from_next[lanes_of<F>], weights[lanes_of<F>];
};

template <class F>
KERNEL void find_points(POINTS<F> &points, float const *xs, float scale)
{
    F x, weight;
    load_lanes(x, xs);
    PLACE<F> place;
    find_place(place, x * scale);
    fade(weight, place.offset);
    std::memcpy(points.cells, &place.whole, sizeof(points.cells));
    store_lanes(place.offset, points.offsets);
    store_lanes(place.offset_from_next, points.offsets_from_next);
    store_lanes(weight, points.weights);
}

// From the four edges of each point to one edge of all points.
KERNEL void gather_edges(FOUR_FLOATS (&edges)[4], __m128 const (&of_points)[4])
{
    __m128 a = of_points[0], b = of_points[1], c = of_points[2], d = of_points[3];
    _MM_TRANSPOSE4_PS(a, b, c, d);
    edges[0] = a;
    edges[1] = b;
    edges[2] = c;
    edges[3] = d;
}
KERNEL void gather_edges(EIGHT_FLOATS (&edges)[4], __m128 const (&of_points)[8])
{
    EIGHT_FLOATS pairs[4];
    for (int n = 0; n < 4; ++n)
        pairs[n] =
            __builtin_shufflevector(FOUR_FLOATS(of_points[n]), FOUR_FLOATS(of_points[n + 4]), 0, 1, 2, 3, 4, 5, 6, 7);
    EIGHT_FLOATS const a = __builtin_shufflevector(pairs[0], pairs[1], 0, 8, 1, 9, 4, 12, 5, 13);
    EIGHT_FLOATS const b = __builtin_shufflevector(pairs[0], pairs[1], 2, 10, 3, 11, 6, 14, 7, 15);
    EIGHT_FLOATS const c = __builtin_shufflevector(pairs[2], pairs[3], 0, 8, 1, 9, 4, 12, 5, 13);
    EIGHT_FLOATS const d = __builtin_shufflevector(pairs[2], pairs[3], 2, 10, 3, 11, 6, 14, 7, 15);
    edges[0] = __builtin_shufflevector(a, c, 0, 1, 8, 9, 4, 5, 12, 13);
    edges[1] = __builtin_shufflevector(a, c, 2, 3, 10, 11, 6, 7, 14, 15);
    edges[2] = __builtin_shufflevector(b, d, 0, 1, 8, 9, 4, 5, 12, 13);
    edges[3] = __builtin_shufflevector(b, d, 2, 3, 10, 11, 6, 7, 14, 15);
}

}  // namespace

template <class F>
KERNEL void GRADIENT_NOISE::fill_row(std::span<float const> xs, float y, float z, std::span<float> values) const
{
    constexpr std::size_t lanes = lanes_of<F>;
    PLACE<FOUR_FLOATS> at_row;
    find_place(at_row, FOUR_FLOATS{0, y, z, 0} * _mm_load_ps(scale_lanes));
    FOUR_FLOATS weight;
    fade(weight, at_row.offset);
    float const weight_y = weight[1], weight_z = weight[2];
    ROW_OF_CELLS const row(LINES(*this, __m128i(at_row.whole)), at_row);
    auto const plane = [&](std::uint32_t x) __attribute__((always_inline))
    {
        std::uint32_t const line = wraps_by_mask ? x & wrap_mask[0] : x % period[0] & 255;
        return PLANE(row, CORNERS(*this, row, line));
    };

    std::uint32_t cell = 0;
    PLANE a = plane(cell), b = plane(cell + 1);
    std::size_t const count = std::min(xs.size(), values.size());
    for (std::size_t first = 0; first < count; first += lanes) {
        std::size_t const left = count - first;
        float rest[lanes] = {};
        if (left < lanes)
            std::copy(xs.begin() + first, xs.begin() + count, rest);
        POINTS<F> points;
        find_points(points, left < lanes ? rest : &xs[first], scale.x);

        __m128 edges_of_points[lanes];
        for (std::size_t n = 0; n < lanes; ++n) {
            if (points.cells[n] != cell) {
                a = points.cells[n] == cell + 1 ? b : plane(points.cells[n]);
                b = plane(points.cells[n] + 1);
                cell = points.cells[n];
            }
            edges_of_points[n] = blend(a.at(_mm_set1_ps(points.offsets[n])),
                                       b.at(_mm_set1_ps(points.offsets_from_next[n])), _mm_set1_ps(points.weights[n]));
        }

        F edges[4];
        gather_edges(edges, edges_of_points);
        F const face0 = edges[0] + (edges[1] - edges[0]) * weight_y;
        F const face1 = edges[2] + (edges[3] - edges[2]) * weight_y;
        F const result = face0 + (face1 - face0) * weight_z;
        if (left < lanes) {
            store_lanes(result, rest);
            std::copy(rest, rest + left, values.begin() + first);
        } else {
            store_lanes(result, &values[first]);
        }
    }
}

WITH_EIGHT_LANES void GRADIENT_NOISE::fill_row_by_eight(std::span<float const> xs, float y, float z,
                                                        std::span<float> values) const
{
    fill_row<EIGHT_FLOATS>(xs, y, z, values);
}

void GRADIENT_NOISE::noise_row(std::span<float const> xs, float y, float z, std::span<float> values) const
{
    if (eight_lanes())
        fill_row_by_eight(xs, y, z, values);
    else
        fill_row<FOUR_FLOATS>(xs, y, z, values);
}

float GRADIENT_NOISE::fractal_noise(VECTOR3 const &point, unsigned octaves, float frequency, float amplitude,
                                    float offset, float gain, float lacunarity) const
{
    float sum = 0;
    for (unsigned octave = 0; octave < octaves; ++octave) {
        sum +=
            noise(point.x * frequency + offset, point.y * frequency + offset, point.z * frequency + offset) * amplitude;
        frequency *= lacunarity;
        amplitude *= gain;
    }
    return sum;
}

float GRADIENT_NOISE::fractal_noise_with_callback(VECTOR3 const &point, unsigned octaves,
                                                  NOISE_CALLBACK &callback) const
{
    float sum = 0, weight = 0.5f;
    VECTOR3 at = point, derivative_sum;
    for (unsigned octave = 0; octave < octaves; ++octave) {
        VECTOR3 derivative;
        float const value = noise_with_derivative(derivative, at.x, at.y, at.z);
        derivative_sum += derivative;
        sum += callback(derivative_sum, value) * weight;
        weight *= 0.5f;
        at *= 2;
    }
    return sum;
}

}  // namespace SUPPORT
