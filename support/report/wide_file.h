// An output file for wide text: UTF-16 goes in, UTF-8 stands in the file. One thread at a time.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/file.h"

#include <cstring>
#include <emmintrin.h>
#include <string_view>

namespace SUPPORT {

// The end of a line, and tabs at the start of the next.
struct LINE_START {
    std::uint32_t tabs;

    std::size_t size() const { return 1 + std::size_t(tabs); }
};

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
    // std::string_view, whose bytes stay as they are; LINE_START.
    template <class... TEXTS>
    void put(TEXTS... texts)
    {
        std::size_t const size = (texts.size() + ...);
        if (size + slack < buffer.capacity - used) [[likely]] {
            char *to = buffer.data + used;
            __m128i units = _mm_setzero_si128();
            (narrow(texts, to, units), ...);
            if (all_ascii(units)) [[likely]] {  // or else what stands behind `used` does not matter
                used += size;
                return;
            }
        }
        put_slowly(texts...);
    }

private:
    static constexpr unsigned buffer_size = 1 << 18;
    static constexpr unsigned slack = 8;  // what may be stored behind all that is put, and does not count

    // Puts a text at `to` and moves it on; the bits of all wide units come to those of the texts before. Units beyond
    // ASCII leave what is of no use. The last units of a text are narrowed together with some before them, rather than
    // one by one.
    static void narrow(std::string_view text, char *&to, __m128i &)
    {
        std::memcpy(to, text.data(), text.size());
        to += text.size();
    }
    static void narrow(LINE_START start, char *&to, __m128i &)
    {
        std::memcpy(to, "\n\t\t\t\t\t\t\t", slack);
        if (start.size() > slack)
            std::memset(to + slack, '\t', start.size() - slack);
        to += start.size();
    }
    static void narrow(std::u16string_view text, char *&to, __m128i &all)
    {
        char16_t const *const from = text.data();
        std::size_t const size = text.size();
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
    }
    static bool all_ascii(__m128i units)
    {
        __m128i const beyond = _mm_and_si128(units, _mm_set1_epi16(-0x80));
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

    // Apart from put(), which then has no calls to keep registers for.
    template <class... TEXTS>
    [[gnu::noinline, gnu::cold]] void put_slowly(TEXTS... texts)
    {
        (append(texts), ...);
    }
    void append(std::string_view bytes);
    void append(std::u16string_view text);
    void append(LINE_START start);
    void flush();

    KN::FileOut file;
    KN::DynamicArray<char> buffer;  // its room alone is used
    std::size_t used = 0;
};

}  // namespace SUPPORT
