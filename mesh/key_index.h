// Numbers the keys of vertices in the order in which they first appear: equal keys get one number. A hash table of our
// own over whole keys, because the table whose slots give the vertices their order hashes so weakly that ordinary
// meshes (ground with planar UVWs) all start at one slot.
#pragma once

#include "foundation/dynamic_array.h"
#include "mesh/vertex_key.h"

namespace VEX2_LOADER {

class KEY_INDEX {
public:
    // `expected_keys`: a guess that saves growing.
    explicit KEY_INDEX(unsigned expected_keys);
    ~KEY_INDEX();
    KEY_INDEX(KEY_INDEX const &) = delete;
    KEY_INDEX &operator=(KEY_INDEX const &) = delete;

    // For each i below `count`, in ascending order, one call of either
    //     known(i, number): key i equals that of `number`;
    //     added(i, key): the key is new and got the next number, counted from 0.
    // `make(i, key)` makes key i; it runs up to 2 * distance steps ahead of the other calls. Where keys do not hold the
    // whole vertex, `same_further(i, number)` compares the rest of two vertices with equal keys.
    template <class MAKE, class SAME_FURTHER, class KNOWN, class ADDED>
    void number_keys(unsigned count, MAKE make, SAME_FURTHER same_further, KNOWN known, ADDED added);

    unsigned size() const { return key_count; }

private:
    struct ENTRY {
        std::uint32_t hash;
        std::uint32_t number;
    };
    static constexpr std::uint32_t no_number = 0xffffffff;
    static constexpr unsigned block_size = 1024;  // keys
    static constexpr unsigned distance = 16;      // steps for which a prefetched line is waited for

    // (a0 + f0) * (a1 + f1) + (a2 + f2) * (a3 + f3) + ... with random factors: two keys collide with a chance of 2^-32,
    // whatever the data, and as the factors are drawn anew in each process, no file can be made to collide.
    std::uint32_t hash_of(VERTEX_KEY const &key) const
    {
        __m128i const *const parts = reinterpret_cast<__m128i const *>(&key);
        __m128i sum = _mm_setzero_si128();
        for (int part = 0; part < 4; ++part) {
            __m128i const shifted = _mm_add_epi32(_mm_load_si128(parts + part), _mm_load_si128(factors + part));
            sum = _mm_add_epi64(sum, _mm_mul_epu32(shifted, _mm_srli_epi64(shifted, 32)));
        }
        std::uint64_t mixed = std::uint64_t(_mm_cvtsi128_si64(_mm_add_epi64(sum, _mm_unpackhi_epi64(sum, sum))));
        mixed = (mixed ^ mixed >> 32) * 0x9e3779b97f4a7c15;
        return std::uint32_t(mixed >> 32);
    }
    VERTEX_KEY const &key(unsigned number) const { return blocks.data[number / block_size][number % block_size]; }
    void add(VERTEX_KEY const &key, ENTRY &entry, std::uint32_t hash)
    {
        if (key_count % block_size == 0)
            add_block();
        blocks.data[key_count / block_size][key_count % block_size] = key;
        entry = {hash, key_count++};
        if (key_count > entries.count / 2)
            grow();
    }
    void add_block();
    void make_entries(std::uint32_t size);
    void grow();

    __m128i const *factors;                 // a vector for each part of a key
    KN::DynamicArray<VERTEX_KEY *> blocks;  // the keys by number
    unsigned key_count = 0;
    KN::DynamicArray<ENTRY> entries;  // a power of two of them, at most half of them used; linear probing
    std::uint32_t mask = 0;           // entries.count - 1
};

template <class MAKE, class SAME_FURTHER, class KNOWN, class ADDED>
void KEY_INDEX::number_keys(unsigned count, MAKE make, SAME_FURTHER same_further, KNOWN known, ADDED added)
{
    // Three stages, `distance` keys apart, so that the cache misses of many keys overlap: make the key and ask for its
    // entry; ask for the key that the entry names; compare.
    constexpr unsigned ring = 4 * distance;
    VERTEX_KEY keys[ring];
    std::uint32_t hashes[ring];
    for (std::uint64_t step = 0; step < std::uint64_t(count) + 2 * distance; ++step) {
        if (step < count) {
            VERTEX_KEY &made = keys[step % ring];
            make(unsigned(step), made);
            std::uint32_t const hash = hash_of(made);
            hashes[step % ring] = hash;
            __builtin_prefetch(entries.data + (hash & mask));
        }
        if (step - distance < count) {
            std::uint32_t const number = entries.data[hashes[(step - distance) % ring] & mask].number;
            if (number != no_number)
                __builtin_prefetch(&key(number));
        }
        if (step - 2 * distance >= count)
            continue;

        unsigned const i = unsigned(step - 2 * distance);
        VERTEX_KEY const &sought = keys[i % ring];
        std::uint32_t const hash = hashes[i % ring];
        for (std::uint32_t place = hash & mask;; place = (place + 1) & mask) {
            ENTRY &entry = entries.data[place];
            if (entry.number == no_number) {
                add(sought, entry, hash);
                added(i, sought);
                break;
            }
            if (entry.hash == hash && key(entry.number) == sought && same_further(i, entry.number)) {
                known(i, entry.number);
                break;
            }
        }
    }
}

}  // namespace VEX2_LOADER
