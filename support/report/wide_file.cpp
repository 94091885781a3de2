#include "support/report/wide_file.h"

#include <emmintrin.h>

namespace SUPPORT {

namespace {

// The bytes of `text` at `to`. False, with some of them written, if not all of it is ASCII.
bool narrow_ascii(std::u16string_view text, char *to)
{
    std::size_t i = 0;
    __m128i all = _mm_setzero_si128();
    for (; i + 8 <= text.size(); i += 8) {
        __m128i const units = _mm_loadu_si128(reinterpret_cast<__m128i const *>(text.data() + i));
        all = _mm_or_si128(all, units);
        _mm_storel_epi64(reinterpret_cast<__m128i *>(to + i), _mm_packus_epi16(units, units));
    }
    __m128i const beyond = _mm_and_si128(all, _mm_set1_epi16(short(0xff80)));
    char16_t rest = 0;
    for (; i < text.size(); ++i) {
        rest |= text[i];
        to[i] = char(text[i]);
    }
    return rest < 0x80 && _mm_movemask_epi8(_mm_cmpeq_epi16(beyond, _mm_setzero_si128())) == 0xffff;
}

}  // namespace

bool WIDE_FILE_OUT::open(KN::String const &path)
{
    close();
    return file.open(path, false, true);
}

bool WIDE_FILE_OUT::close()
{
    if (used != 0)
        flush();
    return file.close();
}

void WIDE_FILE_OUT::put(std::u16string_view text)
{
    if (text.size() <= buffer_size && narrow_ascii(text, room(text.size())))
        used += text.size();
    else
        put_bytes(KN::to_utf8(text));
}

void WIDE_FILE_OUT::put_bytes(std::string_view bytes)
{
    while (!bytes.empty()) {
        std::string_view const some = bytes.substr(0, buffer_size);
        std::memcpy(room(some.size()), some.data(), some.size());
        used += some.size();
        bytes.remove_prefix(some.size());
    }
}

void WIDE_FILE_OUT::put_bytes(char byte, unsigned times)
{
    for (; times != 0; --times) {
        *room(1) = byte;
        ++used;
    }
}

// At least `size` bytes, at most `buffer_size`, behind those in use.
char *WIDE_FILE_OUT::room(std::size_t size)
{
    if (size > buffer.count - used)
        flush();
    return buffer.data + used;
}

void WIDE_FILE_OUT::flush()
{
    file.write(buffer.data, unsigned(used));
    used = 0;
    buffer.resize(buffer_size);
}

}  // namespace SUPPORT
