// An output file for wide text: UTF-16 goes in, UTF-8 stands in the file. One thread at a time.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/file.h"

#include <cstring>
#include <emmintrin.h>
#include <string_view>

namespace SUPPORT {

class WIDE_FILE_OUT {
public:
    WIDE_FILE_OUT() = default;
    ~WIDE_FILE_OUT() { close(); }

    // Creates the file or truncates it. Before this, and after a failure, good() is false and text goes nowhere.
    bool open(KN::String const &path);
    // False once anything has failed. Buffered text may fail later: close() has the last word.
    bool good() const { return file.status() == 0; }
    bool close();

    // Texts one after another: std::u16string_view, in which a surrogate without its partner becomes U+FFFD, and
    // std::string_view, whose bytes stay as they are.
    template <class... TEXTS>
    void put(TEXTS... texts)
    {
        std::size_t const size = (texts.size() + ...);
        if (size >= buffer.capacity - used && !make_room(size)) {
            (put_slowly(texts), ...);
            return;
        }
        char *to = buffer.data + used;
        bool const all_narrow = (narrow(texts, to) && ...);
        if (all_narrow)
            used += size;
        else  // what stands behind `used` does not matter
            (put_slowly(texts), ...);
    }

private:
    static constexpr unsigned buffer_size = 1 << 18;

    static bool narrow(std::string_view text, char *&to)
    {
        std::memcpy(to, text.data(), text.size());
        to += text.size();
        return true;
    }
    // False if not all of the text is ASCII; what stands at `to` is then of no use. The last units of a text are
    // narrowed together with some before them, rather than one by one.
    static bool narrow(std::u16string_view text, char *&to)
    {
        char16_t const *const from = text.data();
        std::size_t const size = text.size();
        __m128i all = _mm_setzero_si128();
        if (size >= 8) {
            for (std::size_t i = 0; i < size - 8; i += 8)
                narrow_8(from + i, to + i, all);
            narrow_8(from + size - 8, to + size - 8, all);
        } else if (size >= 4) {
            narrow_4(from, to, all);
            narrow_4(from + size - 4, to + size - 4, all);
        } else {
            for (std::size_t i = 0; i < size; ++i) {
                all = _mm_or_si128(all, _mm_cvtsi32_si128(from[i]));
                to[i] = char(from[i]);
            }
        }
        to += size;
        __m128i const beyond = _mm_and_si128(all, _mm_set1_epi16(-0x80));
        return _mm_movemask_epi8(_mm_cmpeq_epi16(beyond, _mm_setzero_si128())) == 0xffff;
    }
    static void narrow_8(char16_t const *from, char *to, __m128i &all)
    {
        __m128i const units = _mm_loadu_si128(reinterpret_cast<__m128i const *>(from));
        all = _mm_or_si128(all, units);
        _mm_storel_epi64(reinterpret_cast<__m128i *>(to), _mm_packus_epi16(units, units));
    }
    static void narrow_4(char16_t const *from, char *to, __m128i &all)
    {
        __m128i const units = _mm_loadl_epi64(reinterpret_cast<__m128i const *>(from));
        all = _mm_or_si128(all, units);
        int const bytes = _mm_cvtsi128_si32(_mm_packus_epi16(units, units));
        std::memcpy(to, &bytes, sizeof bytes);
    }

    bool make_room(std::size_t size);
    void put_slowly(std::string_view bytes);
    void put_slowly(std::u16string_view text);
    void flush();

    KN::FileOut file;
    KN::DynamicArray<char> buffer;  // its room alone is used
    std::size_t used = 0;
};

}  // namespace SUPPORT
