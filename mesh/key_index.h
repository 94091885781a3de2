// Numbers the keys of vertices in the order in which they first appear: equal keys get one number. A hash table of our
// own over whole keys, because the table whose slots give the vertices their order hashes so weakly that ordinary
// meshes (ground with planar UVWs) all start at one slot.
#pragma once

#include "foundation/dynamic_array.h"
#include "mesh/vertex_key.h"

#include <algorithm>

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
    // `make(i, key)` makes key i; it runs some steps ahead of the other calls. Where keys do not hold the
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
    static constexpr unsigned batch_size = 8;

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
    // Three stages, a batch of keys apart, so that the cache misses of a batch overlap and have arrived when they are
    // needed: make the keys and ask for their entries; ask for the keys that the entries name; compare.
    VERTEX_KEY keys[3][batch_size];
    std::uint32_t hashes[3][batch_size];
    std::uint64_t const batch_count = (std::uint64_t(count) + batch_size - 1) / batch_size;
    auto const size_of = [count](std::uint64_t batch) {
        return unsigned(std::min<std::uint64_t>(batch_size, count - batch * batch_size));
    };
    for (std::uint64_t batch = 0; batch < batch_count + 2; ++batch) {
        if (batch < batch_count) {
            VERTEX_KEY *const made = keys[batch % 3];
            for (unsigned k = 0; k < size_of(batch); ++k)
                make(unsigned(batch * batch_size + k), made[k]);
            for (unsigned k = 0; k < size_of(batch); ++k) {
                hashes[batch % 3][k] = hash_of(made[k]);
                __builtin_prefetch(entries.data + (hashes[batch % 3][k] & mask));
            }
        }
        if (batch - 1 < batch_count) {
            for (unsigned k = 0; k < size_of(batch - 1); ++k) {
                std::uint32_t const number = entries.data[hashes[(batch - 1) % 3][k] & mask].number;
                if (number != no_number)
                    __builtin_prefetch(&key(number));
            }
        }
        if (batch - 2 >= batch_count)
            continue;
        for (unsigned k = 0; k < size_of(batch - 2); ++k) {
            unsigned const i = unsigned((batch - 2) * batch_size + k);
            VERTEX_KEY const &sought = keys[(batch - 2) % 3][k];
            std::uint32_t const hash = hashes[(batch - 2) % 3][k];
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
}

}  // namespace VEX2_LOADER
