// Text. KN::String is bytes (UTF-8 where it is shown to people), KN::UniString is UTF-16 code units on every system;
// both are the standard strings with a few operations more. Two texts are equal if length and every unit are.
//
// Four ways lead between them: must_fix_string_* is the byte-for-unit pair that paths of old interfaces use and that
// loses what a byte cannot hold; to_utf8 and from_utf8 lose nothing.
#pragma once

#include "foundation/api.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace KN {

class String : public std::string {
public:
    using std::string::string;
    String() = default;
    String(std::string text) : std::string(std::move(text)) {}
    String(std::string_view text) : std::string(text) {}

    unsigned length() const { return unsigned(std::string::size()); }
    // A copy in which A to Z are small; other bytes stay.
    FOUNDATION_API String lower() const;
};

class UniString : public std::u16string {
public:
    using std::u16string::u16string;
    UniString() = default;
    UniString(std::u16string text) : std::u16string(std::move(text)) {}
    UniString(std::u16string_view text) : std::u16string(text) {}

    unsigned length() const { return unsigned(std::u16string::size()); }
    FOUNDATION_API UniString lower() const;  // A to Z only, as String::lower

    FOUNDATION_API static UniString format(unsigned value);    // decimal
    FOUNDATION_API static UniString format_signed(int value);  // decimal, "-" in front of negative values
    // Fixed notation with `decimals` digits behind the point; unless `whole`, trailing zeros and a bare point go.
    FOUNDATION_API static UniString format(float value, int decimals, bool whole);
};

// Each byte becomes the unit of the same number.
FOUNDATION_API UniString must_fix_string_widen(String const &bytes);
// Each unit below 0x100 becomes the byte of the same number, others "?".
FOUNDATION_API String must_fix_string_narrow(UniString const &units);

// A surrogate without its partner becomes U+FFFD; so does each byte that is no UTF-8 on the way back.
FOUNDATION_API String to_utf8(std::u16string_view units);
FOUNDATION_API UniString from_utf8(std::string_view bytes);

// The text for a log: control bytes shown as \xNN, so that a hostile name cannot steer a terminal.
FOUNDATION_API String printable(std::string_view text);

}  // namespace KN

template <>
struct std::hash<KN::String> : std::hash<std::string> {};
template <>
struct std::hash<KN::UniString> : std::hash<std::u16string> {};
