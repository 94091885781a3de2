#include "foundation/string.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <emmintrin.h>

namespace KN {

namespace {

template <class TEXT>
TEXT lower_ascii(TEXT text)
{
    for (auto &unit : text)
        if (unit >= 'A' && unit <= 'Z')
            unit = typename TEXT::value_type(unit + ('a' - 'A'));
    return text;
}

UniString widen_ascii(char const *begin, char const *end) { return UniString(begin, end); }

// Two decimal digits as UTF-16 units, the first in the low half.
constexpr auto two_digits = [] {
    std::array<std::uint32_t, 100> pairs = {};
    for (unsigned i = 0; i < pairs.size(); ++i)
        pairs[i] = (u'0' + i / 10) | (u'0' + i % 10) << 16;
    return pairs;
}();

// The digits of a number below 10,000 likewise, the first in the lowest bits.
std::uint64_t four_digits(unsigned value)
{
    return two_digits[value / 100] | std::uint64_t(two_digits[value % 100]) << 32;
}

// Texts of up to seven units, which a string holds within itself, are what reports are made of. Their units are stored
// at once, so that whoever reads them next need not wait for single stores: `length` of 1 to 4 units, the first in the
// lowest bits, and behind them those of `back`.
UniString short_text(std::uint64_t units, unsigned length, std::uint64_t back, unsigned back_length)
{
    unsigned const bits = 16 * length;
    units |= back << (bits - 1) << 1;
    back >>= 64 - bits;
    UniString text(u"0000000", 7);  // and the unit that ends it
    _mm_storeu_si128(reinterpret_cast<__m128i *>(text.data()), _mm_set_epi64x(std::int64_t(back), std::int64_t(units)));
    text.resize(length + back_length);
    return text;
}

// Four digits without the zeros in front; the last digit stays.
struct DIGITS {
    explicit DIGITS(std::uint64_t four)
    {
        int const zero_bits = std::countr_zero((four & 0x000f000f000f000f) | std::uint64_t(1) << 48) & ~15;
        units = four >> zero_bits;
        length = 4 - unsigned(zero_bits) / 16;
    }

    std::uint64_t units;
    unsigned length;
};

constexpr unsigned short_numbers = 10'000'000;

UniString format_short(unsigned value)
{
    if (value < 10000) {
        DIGITS const all(four_digits(value));
        return short_text(all.units, all.length, 0, 0);
    }
    DIGITS const first(four_digits(value / 10000));
    return short_text(first.units, first.length, four_digits(value % 10000), 4);
}

// Up to 9999.99 and -999.99. A hundredfold f32 is exact in f64, so that what is rounded is the value itself.
bool has_short_hundredths(float value) { return value > -999.99f && value < 9999.99f; }

UniString format_short_hundredths(float value)
{
    int const hundredths = _mm_cvtsd_si32(_mm_set_sd(std::fabs(value) * 100.0));
    DIGITS first(four_digits(unsigned(hundredths) / 100));
    if (std::signbit(value)) {
        first.units = first.units << 16 | u'-';
        ++first.length;
    }
    return short_text(first.units, first.length, u'.' | std::uint64_t(two_digits[unsigned(hundredths) % 100]) << 16, 3);
}

template <class NUMBER>
[[gnu::noinline]] UniString format_any(NUMBER value)
{
    std::array<char, 16> digits;
    return widen_ascii(digits.data(), std::to_chars(digits.begin(), digits.end(), value).ptr);
}

void append_utf8(String &bytes, char32_t code)
{
    auto const tail = [&](int shift) { bytes += char(0x80 | (code >> shift & 0x3f)); };
    if (code < 0x80) {
        bytes += char(code);
    } else if (code < 0x800) {
        bytes += char(0xc0 | code >> 6);
        tail(0);
    } else if (code < 0x10000) {
        bytes += char(0xe0 | code >> 12);
        tail(6);
        tail(0);
    } else {
        bytes += char(0xf0 | code >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

bool is_high(char16_t unit) { return unit >= 0xd800 && unit < 0xdc00; }
bool is_low(char16_t unit) { return unit >= 0xdc00 && unit < 0xe000; }

// The code point at the front of `bytes` and its length; length 0 if no valid sequence stands there.
struct DECODED {
    char32_t code;
    unsigned length;
};
DECODED decode_utf8(std::string_view bytes)
{
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    unsigned char const first = static_cast<unsigned char>(bytes[0]);
    unsigned const length = first < 0x80 ? 1 : first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : first >= 0xc0 ? 2 : 0;
    if (length == 0 || first >= 0xf8 || bytes.size() < length)
        return {0, 0};
    char32_t code = length == 1 ? first : first & (0x7fu >> length);
    for (unsigned i = 1; i < length; ++i) {
        unsigned char const byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xc0) != 0x80)
            return {0, 0};
        code = code << 6 | (byte & 0x3f);
    }
    if (code < least[length] || code > 0x10ffff || (code >= 0xd800 && code < 0xe000))
        return {0, 0};
    return {code, length};
}

}  // namespace

String String::lower() const { return lower_ascii(*this); }
UniString UniString::lower() const { return lower_ascii(*this); }

UniString UniString::format(unsigned value) { return value < short_numbers ? format_short(value) : format_any(value); }

UniString UniString::format_signed(int value) { return value >= 0 ? format(unsigned(value)) : format_any(value); }

UniString UniString::format(float value, int decimals, bool whole)
{
    if (decimals == 2 && whole && has_short_hundredths(value))
        return format_short_hundredths(value);
    std::array<char, 512> digits;  // the longest f32 has 39 digits before the point
    auto const [end, error] =
        std::to_chars(digits.begin(), digits.end(), value, std::chars_format::fixed, decimals < 400 ? decimals : 400);
    char const *last = end;
    if (!whole && std::string_view(digits.data(), end).find('.') != std::string_view::npos) {
        while (last[-1] == '0')
            --last;
        if (last[-1] == '.')
            --last;
    }
    return widen_ascii(digits.data(), last);
}

UniString must_fix_string_widen(String const &bytes)
{
    UniString units;
    units.reserve(bytes.size());
    for (char const byte : bytes)
        units += char16_t(static_cast<unsigned char>(byte));
    return units;
}

String must_fix_string_narrow(UniString const &units)
{
    String bytes;
    bytes.reserve(units.size());
    for (char16_t const unit : units)
        bytes += unit < 0x100 ? char(unit) : '?';
    return bytes;
}

String to_utf8(std::u16string_view units)
{
    String bytes;
    bytes.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        char16_t const unit = units[i];
        if (is_high(unit) && i + 1 < units.size() && is_low(units[i + 1]))
            append_utf8(bytes, 0x10000u + (char32_t(unit - 0xd800) << 10) + (units[++i] - 0xdc00u));
        else
            append_utf8(bytes, is_high(unit) || is_low(unit) ? 0xfffd : unit);
    }
    return bytes;
}

UniString from_utf8(std::string_view bytes)
{
    UniString units;
    units.reserve(bytes.size());
    while (!bytes.empty()) {
        DECODED const decoded = decode_utf8(bytes);
        if (decoded.length == 0) {
            units += char16_t(0xfffd);
            bytes.remove_prefix(1);
            continue;
        }
        if (decoded.code >= 0x10000) {
            units += char16_t(0xd800 + ((decoded.code - 0x10000) >> 10));
            units += char16_t(0xdc00 + (decoded.code & 0x3ff));
        } else {
            units += char16_t(decoded.code);
        }
        bytes.remove_prefix(decoded.length);
    }
    return units;
}

String printable(std::string_view text)
{
    constexpr char digits[] = "0123456789abcdef";
    String shown;
    shown.reserve(text.size());
    for (char const byte : text) {
        unsigned char const value = static_cast<unsigned char>(byte);
        if (value < 0x20 || value == 0x7f) {
            shown += "\\x";
            shown += digits[value >> 4];
            shown += digits[value & 15];
        } else {
            shown += byte;
        }
    }
    return shown;
}

}  // namespace KN
