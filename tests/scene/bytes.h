// Files put together by hand: a writer of ours would share the reader's mistakes.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace TEST_SCENE {

using BYTES = std::string;

template <class T>
BYTES plain(T value)
{
    BYTES bytes(sizeof value, 0);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}
inline BYTES u32(std::uint32_t value) { return plain(value); }
inline BYTES f32(float value) { return plain(value); }
template <class... FLOATS>
BYTES f32s(FLOATS... values)
{
    return (f32(float(values)) + ...);
}
inline BYTES text(std::u16string_view units)
{
    return plain(std::uint16_t(units.size())) + BYTES(reinterpret_cast<char const *>(units.data()), units.size() * 2);
}
inline BYTES times(unsigned count, BYTES const &bytes)
{
    BYTES repeated;
    for (unsigned i = 0; i < count; ++i)
        repeated += bytes;
    return repeated;
}

inline BYTES const magic = {"\x01\x32\x58\x56", 4};
inline BYTES const absent = u32(0);
inline BYTES const none = u32(0);  // an array without elements

inline BYTES chunk(std::int32_t type, BYTES const &payload)
{
    return u32(std::uint32_t(payload.size() + 8)) + u32(std::uint32_t(type)) + payload;
}
inline BYTES header(float version) { return chunk(0, f32(version) + text(u"p") + text(u"")); }
inline BYTES constant(std::uint32_t subtype, BYTES const &value)
{
    return u32(1) + u32(subtype) + u32(0) + f32(0) + u32(1) + f32(0) + u32(1) + value;
}
inline BYTES attributes() { return times(5, none); }
// The members that every object of `version` begins with.
inline BYTES object(float version, std::u16string_view name = u"object")
{
    return text(name) + text(u"") + text(u"") + u32(0) + (version >= 1.04f ? attributes() : BYTES()) +
           (version >= 1.13f ? absent : BYTES());
}

}  // namespace TEST_SCENE
