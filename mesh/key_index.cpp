#include "mesh/key_index.h"

#include <algorithm>
#include <bit>
#include <random>

namespace VEX2_LOADER {

namespace {

struct RANDOM_FACTORS {
    alignas(16) std::uint32_t words[16];
    RANDOM_FACTORS()
    {
        std::random_device device;
        for (std::uint32_t &word : words)
            word = device();
    }
};

}  // namespace

KEY_INDEX::KEY_INDEX(unsigned expected_keys)
{
    static RANDOM_FACTORS const drawn;
    factors = reinterpret_cast<__m128i const *>(drawn.words);
    make_entries(std::bit_ceil(expected_keys / 2 * 4 + 64));
}

KEY_INDEX::~KEY_INDEX()
{
    for (VERTEX_KEY *block : blocks)
        KN::custom_free(block);
}

void KEY_INDEX::add_block()
{
    blocks.append(static_cast<VERTEX_KEY *>(KN::malloc_aligned(block_size * sizeof(VERTEX_KEY), alignof(VERTEX_KEY))));
}

void KEY_INDEX::make_entries(std::uint32_t size)
{
    entries.reserve(size);
    entries.count = size;
    std::fill(entries.begin(), entries.end(), ENTRY{0, no_number});
    mask = size - 1;
}

void KEY_INDEX::grow()
{
    KN::DynamicArray<ENTRY> const old = std::move(entries);
    make_entries(old.count * 2);
    for (ENTRY const &entry : old) {
        if (entry.number == no_number)
            continue;
        std::uint32_t place = entry.hash & mask;
        while (entries.data[place].number != no_number)
            place = (place + 1) & mask;
        entries.data[place] = entry;
    }
}

}  // namespace VEX2_LOADER
