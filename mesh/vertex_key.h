// A vertex as the comparison of duplicates sees it: every compared attribute rounded to its number of decimal digits,
// as bit patterns, in one cache line. Rounded floats are never NaN nor -0 (see `snapped`), so that two of them are
// equal exactly if their bits are, and equal vertices have equal keys.
#pragma once

#include <cstdint>
#include <emmintrin.h>

namespace VEX2_LOADER {

struct DUPLICATE_OPTIONS;

// Where the attributes of a vertex stand. `uvws` has three floats a set.
struct VERTEX_ATTRIBUTES {
    float const *position;  // three
    float const *normal;    // three
    float const *colour;    // four
    float const *uvws;
    std::uint32_t uvw_count;
};

// Attributes that are not compared are zero; the number of UVW sets always counts.
struct alignas(64) VERTEX_KEY {
    std::uint32_t position[3];
    std::uint32_t further_low;  // digest of the UVW sets from the second on, which the key does not hold
    std::uint32_t normal[3];
    std::uint32_t further_high;
    std::uint32_t colour[4];
    std::uint32_t uvw[3];  // the first set
    std::uint32_t uvw_count;
};
static_assert(sizeof(VERTEX_KEY) == 64);

// The arithmetic of one run of the pass: from attributes to keys.
class KEY_RULES {
public:
    explicit KEY_RULES(DUPLICATE_OPTIONS const &options);

    void make_key(VERTEX_ATTRIBUTES const &vertex, VERTEX_KEY &key) const
    {
        __m128i *const parts = reinterpret_cast<__m128i *>(&key);
        __m128i const count = _mm_setr_epi32(0, 0, 0, int(vertex.uvw_count));
        __m128 const first_uvw = vertex.uvw_count != 0 ? load_three(vertex.uvws) : _mm_setzero_ps();
        _mm_store_si128(parts + 0, snapped(load_three(vertex.position), position));
        _mm_store_si128(parts + 1, snapped(load_three(vertex.normal), normal));
        _mm_store_si128(parts + 2, snapped(_mm_loadu_ps(vertex.colour), colour));
        _mm_store_si128(parts + 3, _mm_or_si128(snapped(first_uvw, uvw), count));
        if (vertex.uvw_count > 1 && compares_uvws)
            add_further_sets(vertex, key);
    }

    // Whether the UVW sets that keys do not hold agree too; for vertices whose keys are equal.
    bool same_further_sets(VERTEX_ATTRIBUTES const &a, VERTEX_ATTRIBUTES const &b) const;

    // The hash that gives a vertex its place in the table: the bits of all compared floats, xor'ed.
    std::uint32_t table_hash(VERTEX_ATTRIBUTES const &vertex, VERTEX_KEY const &key) const;

private:
    struct SCALE {
        __m128 scale;
        __m128 unscale;
        __m128i lanes;  // all bits of a lane that is compared, none of the others
    };

    static SCALE make_scale(bool compared, int digits, int lane_count);

    static __m128 load_three(float const *from)
    {
        __m128 const two = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<__m128i const *>(from)));
        return _mm_movelh_ps(two, _mm_load_ss(from + 2));
    }

    // value * scale, rounded half away from zero to an integer, * unscale. The conversion to an integer gives
    // -2147483648 for everything that does not fit, both infinities and NaN included; so no NaN comes out, and as
    // integers know no -0, none comes out either. A zero may take either half: both round to 0.
    static __m128i snapped(__m128 values, SCALE const &by)
    {
        __m128 const scaled = _mm_mul_ps(values, by.scale);
        __m128 const half = _mm_or_ps(_mm_set1_ps(0.5f), _mm_and_ps(scaled, _mm_set1_ps(-0.0f)));
        __m128i const integers = _mm_cvttps_epi32(_mm_add_ps(scaled, half));
        __m128 const result = _mm_mul_ps(_mm_cvtepi32_ps(integers), by.unscale);
        return _mm_and_si128(_mm_castps_si128(result), by.lanes);
    }

    void add_further_sets(VERTEX_ATTRIBUTES const &vertex, VERTEX_KEY &key) const;

    SCALE position;
    SCALE normal;
    SCALE colour;
    SCALE uvw;
    bool compares_uvws;
};

inline bool operator==(VERTEX_KEY const &a, VERTEX_KEY const &b)
{
    __m128i const *const left = reinterpret_cast<__m128i const *>(&a);
    __m128i const *const right = reinterpret_cast<__m128i const *>(&b);
    __m128i same = _mm_cmpeq_epi32(_mm_load_si128(left), _mm_load_si128(right));
    for (int part = 1; part < 4; ++part)
        same = _mm_and_si128(same, _mm_cmpeq_epi32(_mm_load_si128(left + part), _mm_load_si128(right + part)));
    return _mm_movemask_epi8(same) == 0xffff;
}

}  // namespace VEX2_LOADER
