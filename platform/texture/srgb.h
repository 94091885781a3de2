// Between the bytes of colour pictures and linear light, in which colours are averaged.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>

namespace KESTREL {

// 0 to 255 as stored, 0 to 1 as light.
inline std::array<float, 256> const linear_of_srgb = [] {
    std::array<float, 256> table;
    for (unsigned i = 0; i < 256; ++i) {
        double const stored = i / 255.0;
        table[i] = float(stored <= 0.04045 ? stored / 12.92 : std::pow((stored + 0.055) / 1.055, 2.4));
    }
    return table;
}();

// The nearest byte: the one whose light differs least.
inline std::uint8_t srgb_of_linear(float light)
{
    unsigned low = 0, high = 255;  // the last entry that is not above the light lies in [low, high]
    while (low < high) {
        unsigned const middle = (low + high + 1) / 2;
        if (linear_of_srgb[middle] <= light)
            low = middle;
        else
            high = middle - 1;
    }
    bool const next_is_nearer = low < 255 && linear_of_srgb[low + 1] - light < light - linear_of_srgb[low];
    return std::uint8_t(next_is_nearer ? low + 1 : low);
}

}  // namespace KESTREL
