#include "platform/texture/mip.h"

#include "platform/texture/srgb.h"

#include <algorithm>

namespace KESTREL {

namespace {

// What comes together for one pixel of the result.
struct SUM {
    float values[4] = {}, opaque[3] = {};
    unsigned count = 0;
};

std::uint8_t rounded(float value) { return std::uint8_t(std::clamp(value, 0.0f, 255.0f) + 0.5f); }

void add_colour(SUM &sum, std::uint8_t const *pixel)
{
    float const alpha = pixel[3];
    for (unsigned c = 0; c < 3; ++c) {
        sum.values[c] += linear_of_srgb[pixel[c]] * alpha;
        sum.opaque[c] += linear_of_srgb[pixel[c]];
    }
    sum.values[3] += alpha;
}

void finish_colour(SUM const &sum, std::uint8_t *to)
{
    float const count = float(sum.count);
    for (unsigned c = 0; c < 3; ++c)
        to[c] = srgb_of_linear(sum.values[3] > 0 ? sum.values[c] / sum.values[3] : sum.opaque[c] / count);
    to[3] = rounded(sum.values[3] / count);
}

void add_values(SUM &sum, std::uint8_t const *pixel)
{
    for (unsigned c = 0; c < 4; ++c)
        sum.values[c] += pixel[c];
}

void finish_values(SUM const &sum, std::uint8_t *to)
{
    for (unsigned c = 0; c < 4; ++c)
        to[c] = rounded(sum.values[c] / float(sum.count));
}

void finish_normal(SUM const &sum, std::uint8_t *to)
{
    float direction[3], squared = 0;
    for (unsigned c = 0; c < 3; ++c) {
        direction[c] = sum.values[c] / float(sum.count) - 127.5f;
        squared += direction[c] * direction[c];
    }
    float const scale = squared > 0 ? 127.5f / std::sqrt(squared) : 0;
    for (unsigned c = 0; c < 3; ++c)
        to[c] = rounded(direction[c] * scale + 127.5f);
    to[3] = rounded(sum.values[3] / float(sum.count));
}

}  // namespace

PICTURE half_of(PICTURE const &picture, CONTENT content)
{
    auto *const add = content == CONTENT::COLOUR ? add_colour : add_values;
    auto *const finish = content == CONTENT::COLOUR   ? finish_colour
                         : content == CONTENT::NORMAL ? finish_normal
                                                      : finish_values;
    PICTURE half;
    half.width = std::max(picture.width / 2, 1u);
    half.height = std::max(picture.height / 2, 1u);
    half.pixels.resize(std::size_t(half.width) * half.height * 4);
    for (unsigned y = 0; y < half.height; ++y) {
        unsigned const first_row = y * picture.height / half.height, end_row = (y + 1) * picture.height / half.height;
        for (unsigned x = 0; x < half.width; ++x) {
            unsigned const first = x * picture.width / half.width, end = (x + 1) * picture.width / half.width;
            SUM sum;
            for (unsigned row = first_row; row < end_row; ++row)
                for (unsigned column = first; column < end; ++column, ++sum.count)
                    add(sum, picture.at(column, row));
            finish(sum, half.at(x, y));
        }
    }
    return half;
}

}  // namespace KESTREL
