#include "mesh/vertex_key.h"

#include "mesh/duplicate_vertices.h"

namespace VEX2_LOADER {

KEY_RULES::KEY_RULES(DUPLICATE_OPTIONS const &options)
    : position(make_scale(options.compare_positions, options.position_digits, 3)),
      normal(make_scale(options.compare_normals, options.normal_digits, 3)),
      colour(make_scale(options.compare_colours, options.colour_digits, 4)),
      uvw(make_scale(options.compare_uvws, options.uvw_digits, 3)), compares_uvws(options.compare_uvws)
{}

KEY_RULES::SCALE KEY_RULES::make_scale(bool compared, int digits, int lane_count)
{
    float power = 1;
    float base = 10;
    for (unsigned left = digits < 0 ? 0u - unsigned(digits) : unsigned(digits); left != 0; left >>= 1) {
        if (left & 1)
            power *= base;
        base *= base;
    }
    float const scale = digits < 0 ? 1.0f / power : power;
    int const on = compared ? -1 : 0;
    return {_mm_set1_ps(scale), _mm_set1_ps(1.0f / scale), _mm_setr_epi32(on, on, on, lane_count == 4 ? on : 0)};
}

void KEY_RULES::add_further_sets(VERTEX_ATTRIBUTES const &vertex, VERTEX_KEY &key) const
{
    std::uint64_t digest = 0;
    for (std::uint32_t set = 1; set < vertex.uvw_count; ++set) {
        alignas(16) std::uint64_t bits[2];
        _mm_store_si128(reinterpret_cast<__m128i *>(bits), snapped(load_three(vertex.uvws + 3 * set), uvw));
        for (std::uint64_t const part : bits) {
            digest = (digest ^ part) * 0x9e3779b97f4a7c15;
            digest ^= digest >> 32;
        }
    }
    key.further_low = std::uint32_t(digest);
    key.further_high = std::uint32_t(digest >> 32);
}

bool KEY_RULES::same_further_sets(VERTEX_ATTRIBUTES const &a, VERTEX_ATTRIBUTES const &b) const
{
    if (compares_uvws)
        for (std::uint32_t set = 1; set < a.uvw_count; ++set) {
            __m128i const same =
                _mm_cmpeq_epi32(snapped(load_three(a.uvws + 3 * set), uvw), snapped(load_three(b.uvws + 3 * set), uvw));
            if (_mm_movemask_epi8(same) != 0xffff)
                return false;
        }
    return true;
}

std::uint32_t KEY_RULES::table_hash(VERTEX_ATTRIBUTES const &vertex, VERTEX_KEY const &key) const
{
    std::uint32_t hash = key.colour[3];
    for (int i = 0; i < 3; ++i)
        hash ^= key.position[i] ^ key.normal[i] ^ key.colour[i] ^ key.uvw[i];
    if (compares_uvws)
        for (std::uint32_t set = 1; set < vertex.uvw_count; ++set) {
            alignas(16) std::uint32_t bits[4];
            _mm_store_si128(reinterpret_cast<__m128i *>(bits), snapped(load_three(vertex.uvws + 3 * set), uvw));
            hash ^= bits[0] ^ bits[1] ^ bits[2];
        }
    return hash;
}

}  // namespace VEX2_LOADER
