#include "platform/engine/texture.h"

#include "platform/texture/srgb.h"

#include <algorithm>
#include <cmath>

namespace KESTREL {

namespace {

// The four pixels around a place and the part that each has in it.
struct FOUR_PIXELS {
    std::uint8_t const *pixels[4];
    float parts[4];
};

// The pixels before and behind `place`, which repeats after 1, and the part of the latter.
void neighbours(float place, unsigned size, unsigned &before, unsigned &behind, float &part)
{
    float const inside = place - std::floor(place);  // no number for a place that is none
    float const at = (inside < 1 ? inside : 0) * float(size) - 0.5f;
    float const whole = std::floor(at);
    part = at - whole;
    before = whole < 0 ? size - 1 : std::min(unsigned(whole), size - 1);
    behind = before + 1 == size ? 0 : before + 1;
}

FOUR_PIXELS pixels_around(PICTURE const &picture, float u, float v)
{
    unsigned x0, x1, y0, y1;
    float x, y;
    neighbours(u, picture.width, x0, x1, x);
    neighbours(v, picture.height, y0, y1, y);
    return {{picture.at(x0, y0), picture.at(x1, y0), picture.at(x0, y1), picture.at(x1, y1)},
            {(1 - x) * (1 - y), x * (1 - y), (1 - x) * y, x * y}};
}

}  // namespace

TEXTURE::TEXTURE(PICTURE picture, CONTENT what, bool opaque) : content(what)
{
    if (opaque)
        for (std::size_t i = 3; i < picture.pixels.size(); i += 4)
            picture.pixels[i] = 255;
    levels.push_back(std::move(picture));
    while (levels.back().width > 1 || levels.back().height > 1)
        levels.push_back(half_of(levels.back(), content));
}

TEXEL TEXTURE::sample(float u, float v, unsigned level) const
{
    FOUR_PIXELS const four = pixels_around(levels[std::min(std::size_t(level), levels.size() - 1)], u, v);
    TEXEL made = {};
    float plain[3] = {};
    for (unsigned i = 0; i < 4; ++i) {
        float const alpha = four.parts[i] * float(four.pixels[i][3]) / 255;
        made.alpha += alpha;
        for (unsigned c = 0; c < 3; ++c) {
            std::uint8_t const stored = four.pixels[i][c];
            float const value = content == CONTENT::COLOUR ? linear_of_srgb[stored] : float(stored) / 255;
            made.colour[c] += alpha * value;
            plain[c] += four.parts[i] * value;
        }
    }
    for (unsigned c = 0; c < 3; ++c)
        made.colour[c] = made.alpha > 0 ? made.colour[c] / made.alpha : plain[c];
    return made;
}

float TEXTURE::alpha(float u, float v) const
{
    FOUR_PIXELS const four = pixels_around(levels[0], u, v);
    float alpha = 0;
    for (unsigned i = 0; i < 4; ++i)
        alpha += four.parts[i] * float(four.pixels[i][3]) / 255;
    return alpha;
}

unsigned TEXTURE::level_for(float size) const
{
    if (!(size > 1))
        return 0;
    return std::min(unsigned(std::log2(std::min(size, 65536.0f))), unsigned(levels.size()) - 1);
}

}  // namespace KESTREL
