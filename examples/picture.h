// Pictures for the example materials: tiling textures made of noise and patterns, saved as TGA files.
#pragma once

#include "foundation/string.h"

#include <vector>

namespace EXAMPLES {

// A tiling field of one number per pixel, row by row from the bottom.
struct FIELD {
    static constexpr int size = 256;  // pixels a side
    std::vector<float> values = std::vector<float>(size * size);

    float at(int x, int y) const { return values[std::size_t(y & (size - 1)) * size + std::size_t(x & (size - 1))]; }
};

struct PICTURE {
    struct COLOUR {
        float red, green, blue;  // 0 to 1, as a screen shows them
        float opacity = 1;
    };
    std::vector<COLOUR> pixels = std::vector<COLOUR>(FIELD::size * FIELD::size);
};

// Noise that tiles, 0 to 1: `columns` x `rows` random values a side and their interpolation.
float tiling_noise(float u, float v, int columns, int rows, unsigned seed);
// Several octaves of it; every octave doubles the number of values and halves the strength.
float tiling_clouds(float u, float v, int columns, int rows, int octaves, unsigned seed);

PICTURE plaster_picture();
PICTURE thatch_picture();  // straw along v
PICTURE timber_picture();  // grain along v
PICTURE stone_picture();
PICTURE stone_normal_picture();  // the relief of stone_picture
PICTURE grass_picture();
PICTURE rock_picture();
PICTURE cloth_picture();
PICTURE bark_picture();  // furrows along v
// Oak leaves with nothing between them, through the year.
PICTURE leaves_picture();  // of summer
PICTURE leaves_spring_picture();
PICTURE leaves_autumn_picture();
PICTURE leaves_winter_picture();  // the few that stay

// False, with a line on standard error, if the file cannot be written.
bool save_picture(PICTURE const &picture, KN::String const &path);

}  // namespace EXAMPLES
