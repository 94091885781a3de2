#include "platform/engine/film.h"

#include "platform/texture/srgb.h"

#include <algorithm>

namespace KESTREL {

namespace {

void put_colour(unsigned argb, std::uint8_t *to)
{
    to[0] = std::uint8_t(argb >> 16);
    to[1] = std::uint8_t(argb >> 8);
    to[2] = std::uint8_t(argb);
    to[3] = std::uint8_t(argb >> 24);
}

std::uint8_t byte_of(float share) { return std::uint8_t(std::clamp(share, 0.0f, 1.0f) * 255 + 0.5f); }

// From the alpha of what is empty to 255, by how much is covered.
std::uint8_t alpha_over(unsigned clear, PIXEL_SUM const &sum)
{
    unsigned const empty = clear >> 24;
    return std::uint8_t(empty + ((255 - empty) * sum.hits + sum.samples / 2) / sum.samples);
}

}  // namespace

void FILM::start(unsigned width, unsigned height, VIEW_CLEAR const &clear)
{
    empty = clear;
    unsigned const values[3] = {clear.normal, clear.colour, clear.height};
    for (unsigned kind = 0; kind < 3; ++kind) {
        PICTURE &picture = pictures[kind];
        picture.width = width;
        picture.height = height;
        picture.pixels.resize(std::size_t(width) * height * 4);
        for (std::size_t i = 0; i < picture.pixels.size(); i += 4)
            put_colour(values[kind], &picture.pixels[i]);
    }
}

void FILM::put(unsigned x, unsigned y, PIXEL_SUM const &sum)
{
    if (sum.hits == 0)
        return;
    float const hits = float(sum.hits);
    std::uint8_t *const colour = pictures[CAPTURE_REQUEST::COLOUR].at(x, y);
    std::uint8_t *const normal = pictures[CAPTURE_REQUEST::NORMAL].at(x, y);
    std::uint8_t *const height = pictures[CAPTURE_REQUEST::HEIGHT].at(x, y);
    float const squared = sum.normal[0] * sum.normal[0] + sum.normal[1] * sum.normal[1] + sum.normal[2] * sum.normal[2];
    float const scale = squared > 0 ? 1 / std::sqrt(squared) : 0;
    for (unsigned c = 0; c < 3; ++c) {
        colour[c] = srgb_of_linear(sum.colour[c] / hits);
        normal[c] = byte_of(sum.normal[c] * scale * 0.5f + 0.5f);
        height[c] = byte_of(sum.height / hits);
    }
    colour[3] = alpha_over(empty.colour, sum);
    normal[3] = alpha_over(empty.normal, sum);
    height[3] = alpha_over(empty.height, sum);
}

// Goes outwards from all covered pixels at once, a step at a time.
void FILM::spread_colours()
{
    PICTURE &picture = pictures[CAPTURE_REQUEST::COLOUR];
    unsigned const nothing = empty.colour >> 24;
    std::vector<std::uint32_t> reached;
    std::vector<bool> is_reached(std::size_t(picture.width) * picture.height);
    for (std::uint32_t i = 0; i < is_reached.size(); ++i)
        if (picture.pixels[std::size_t(i) * 4 + 3] > nothing) {
            is_reached[i] = true;
            reached.push_back(i);
        }
    for (std::size_t next = 0; next < reached.size(); ++next) {
        std::uint32_t const at = reached[next], x = at % picture.width, y = at / picture.width;
        auto const spread_to = [&](std::uint32_t neighbour) {
            if (is_reached[neighbour])
                return;
            is_reached[neighbour] = true;
            reached.push_back(neighbour);
            std::copy_n(&picture.pixels[std::size_t(at) * 4], 3, &picture.pixels[std::size_t(neighbour) * 4]);
        };
        if (x > 0)
            spread_to(at - 1);
        if (x + 1 < picture.width)
            spread_to(at + 1);
        if (y > 0)
            spread_to(at - picture.width);
        if (y + 1 < picture.height)
            spread_to(at + picture.width);
    }
}

}  // namespace KESTREL
