// A point lies in a cell of the lattice between two planes of constant x. The four corners of the cell on one plane are
// worked on at once, in four lanes: (y, z), (y + 1, z), (y, z + 1), (y + 1, z + 1). A row of points along x meets each
// plane once, and blends four points at a time.

#include "support/numeric/gradient_noise.h"

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

// A coordinate in each lane: the whole number below it, and how far it is from that one and from the next.
struct PLACE {
    __m128i whole;
    __m128 offset, offset_from_next;
};

PLACE place_of(__m128 scaled)
{
    __m128 const one = _mm_set1_ps(1);
    __m128 const least = _mm_set1_ps(-2147483648.0f);
    __m128 const most = _mm_set1_ps(2147483520.0f);
    __m128 const p = _mm_min_ps(_mm_max_ps(scaled, least), most);  // least for what is no number
    __m128i const truncated = _mm_cvttps_epi32(p);
    __m128 const above = _mm_cmpgt_ps(_mm_cvtepi32_ps(truncated), p);  // a negative number, all ones
    __m128 const whole = _mm_sub_ps(_mm_cvtepi32_ps(truncated), _mm_and_ps(above, one));
    return {_mm_add_epi32(truncated, _mm_castps_si128(above)), _mm_sub_ps(p, whole),
            _mm_sub_ps(p, _mm_add_ps(whole, one))};
}

__m128 fade(__m128 t)
{
    __m128 const inner = _mm_sub_ps(_mm_mul_ps(_mm_set1_ps(6), t), _mm_set1_ps(15));
    __m128 const outer = _mm_add_ps(_mm_mul_ps(inner, t), _mm_set1_ps(10));
    __m128 const cube = _mm_mul_ps(_mm_mul_ps(t, t), t);
    return _mm_min_ps(_mm_max_ps(_mm_mul_ps(outer, cube), _mm_setzero_ps()), _mm_set1_ps(1));
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

template <int lane>
std::uint32_t whole_in(__m128i v)
{
    return std::uint32_t(_mm_cvtsi128_si32(_mm_shuffle_epi32(v, _MM_SHUFFLE(lane, lane, lane, lane))));
}

std::uint32_t wrapped(std::uint32_t number, std::uint32_t period)
{
    return (period & (period - 1)) == 0 ? number & (period - 1) : number % period;  // mostly a power of two
}

}  // namespace

// The cells with the same y and z: their lattice lines, wrapped by the period, and the way to a point from each of the
// four.
struct GRADIENT_NOISE::ROW_OF_CELLS {
    std::uint32_t y[2], z[2];
    __m128 dy, dz;

    // `place` has x, y, z in its first three lanes.
    ROW_OF_CELLS(GRADIENT_NOISE const &noise, PLACE const &place)
    {
        std::uint32_t const first_y = whole_in<1>(place.whole), first_z = whole_in<2>(place.whole);
        y[0] = wrapped(first_y, noise.period[1]);
        y[1] = wrapped(first_y + 1, noise.period[1]);
        z[0] = wrapped(first_z, noise.period[2]);
        z[1] = wrapped(first_z + 1, noise.period[2]);
        __m128 const both_y = _mm_shuffle_ps(place.offset, place.offset_from_next, _MM_SHUFFLE(1, 1, 1, 1));
        dy = _mm_shuffle_ps(both_y, both_y, _MM_SHUFFLE(2, 0, 2, 0));
        dz = _mm_shuffle_ps(place.offset, place.offset_from_next, _MM_SHUFFLE(2, 2, 2, 2));
    }
};

// The four corners on the plane x: their gradients, and what y and z contribute to their values.
struct GRADIENT_NOISE::PLANE {
    __m128 gradient_x, gradient_y, gradient_z;
    __m128 y_part, z_part;

    PLANE(GRADIENT_NOISE const &noise, ROW_OF_CELLS const &row, std::uint32_t x)
    {
        std::uint32_t const *const permutation = noise.permutation;
        std::uint32_t const plane = permutation[wrapped(x, noise.period[0]) & 255];
        std::uint32_t const line[2] = {permutation[(plane + row.y[0]) & 255], permutation[(plane + row.y[1]) & 255]};
        auto const gradient = [&](unsigned y, unsigned z) {
            return _mm_loadu_ps(&gradients[permutation[(line[y] + row.z[z]) & 255] & 15].x);
        };
        gradient_x = gradient(0, 0);
        gradient_y = gradient(1, 0);
        gradient_z = gradient(0, 1);
        __m128 fourth = gradient(1, 1);
        _MM_TRANSPOSE4_PS(gradient_x, gradient_y, gradient_z, fourth);
        y_part = _mm_mul_ps(row.dy, gradient_y);
        z_part = _mm_mul_ps(row.dz, gradient_z);
    }

    // Each gradient times the way from its corner.
    __m128 values(__m128 dx) const { return _mm_add_ps(_mm_add_ps(_mm_mul_ps(dx, gradient_x), y_part), z_part); }
};

GRADIENT_NOISE::GRADIENT_NOISE(VECTOR3 const &given_scale, std::uint32_t period_x, std::uint32_t period_y,
                               std::uint32_t period_z)
    : scale(given_scale), period{period_x, period_y, period_z}
{
    RANDOM_STATE random{25492};
    for (std::uint32_t &entry : permutation)
        entry = next_random(random) & 255;
}

float GRADIENT_NOISE::noise(float x, float y, float z) const
{
    PLACE const place = place_of(_mm_setr_ps(x * scale.x, y * scale.y, z * scale.z, 0));
    __m128 const weight = fade(place.offset);
    ROW_OF_CELLS const row(*this, place);
    std::uint32_t const i = whole_in<0>(place.whole);
    PLANE const a(*this, row, i), b(*this, row, i + 1);

    __m128 const edges =
        blend(a.values(all<0>(place.offset)), b.values(all<0>(place.offset_from_next)), all<0>(weight));
    __m128 const next_edges = _mm_shuffle_ps(edges, edges, _MM_SHUFFLE(3, 3, 1, 1));
    __m128 const faces = blend(edges, next_edges, all<1>(weight));  // in lanes 0 and 2
    return _mm_cvtss_f32(blend(faces, _mm_movehl_ps(faces, faces), all<2>(weight)));
}

float GRADIENT_NOISE::noise_with_derivative(VECTOR3 &derivative, float x, float y, float z) const
{
    PLACE const place = place_of(_mm_setr_ps(x * scale.x, y * scale.y, z * scale.z, 0));
    __m128 const weight = fade(place.offset), slope = fade_derivative(place.offset);
    ROW_OF_CELLS const row(*this, place);
    std::uint32_t const i = whole_in<0>(place.whole);
    PLANE const a(*this, row, i), b(*this, row, i + 1);

    // Blend along x: of the four edges first the values, then the derivatives by x, y and z; turned over, each edge
    // holds its value and derivatives in its lanes.
    __m128 const value_a = a.values(all<0>(place.offset)), value_b = b.values(all<0>(place.offset_from_next));
    __m128 const weight_x = all<0>(weight);
    __m128 edge0 = blend(value_a, value_b, weight_x);
    __m128 edge1 = _mm_add_ps(blend(a.gradient_x, b.gradient_x, weight_x),
                              _mm_mul_ps(_mm_sub_ps(value_b, value_a), all<0>(slope)));
    __m128 edge2 = blend(a.gradient_y, b.gradient_y, weight_x);
    __m128 edge3 = blend(a.gradient_z, b.gradient_z, weight_x);
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

void GRADIENT_NOISE::noise_row(std::span<float const> xs, float y, float z, std::span<float> values) const
{
    PLACE const at_row = place_of(_mm_setr_ps(0, y * scale.y, z * scale.z, 0));
    __m128 const weight = fade(at_row.offset);
    __m128 const weight_y = all<1>(weight), weight_z = all<2>(weight);
    ROW_OF_CELLS const row(*this, at_row);
    __m128 const scale_x = _mm_set1_ps(scale.x);

    std::uint32_t cell = 0;
    PLANE a(*this, row, cell), b(*this, row, cell + 1);
    std::size_t const count = std::min(xs.size(), values.size());
    for (std::size_t first = 0; first < count; first += 4) {
        std::size_t const now = std::min<std::size_t>(4, count - first);
        alignas(16) float four[4] = {};
        std::copy_n(&xs[first], now, four);

        PLACE const place = place_of(_mm_mul_ps(_mm_load_ps(four), scale_x));
        alignas(16) std::uint32_t cells[4];
        alignas(16) float offsets[4], offsets_from_next[4], weights[4];
        _mm_store_si128(reinterpret_cast<__m128i *>(cells), place.whole);
        _mm_store_ps(offsets, place.offset);
        _mm_store_ps(offsets_from_next, place.offset_from_next);
        _mm_store_ps(weights, fade(place.offset));

        __m128 edges[4];
        for (int n = 0; n < 4; ++n) {
            if (cells[n] != cell) {
                a = cells[n] == cell + 1 ? b : PLANE(*this, row, cells[n]);
                b = PLANE(*this, row, cells[n] + 1);
                cell = cells[n];
            }
            edges[n] = blend(a.values(_mm_set1_ps(offsets[n])), b.values(_mm_set1_ps(offsets_from_next[n])),
                             _mm_set1_ps(weights[n]));
        }

        _MM_TRANSPOSE4_PS(edges[0], edges[1], edges[2], edges[3]);  // one edge of all four points in each
        __m128 const face0 = blend(edges[0], edges[1], weight_y);
        __m128 const face1 = blend(edges[2], edges[3], weight_y);
        _mm_store_ps(four, blend(face0, face1, weight_z));
        std::copy_n(four, now, &values[first]);
    }
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
