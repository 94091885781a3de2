// height_field_pictures FOLDER: an island as a height field in its files and as pictures to look at: island.dds and
// island.tif (16 bits), island.tga (coloured and lit from the top left), island_grey.tga (a quarter of its size), and
// island_bands.tga (a band of colour every 25 metres, from a palette).

#include "foundation/file.h"
#include "support/image/height_field.h"
#include "support/image/palette_image.h"
#include "support/image/typed_image.h"
#include "support/numeric/gradient_noise.h"

#include <algorithm>
#include <cmath>
#include <iostream>

using namespace SUPPORT;

namespace {

constexpr unsigned side = 513;
constexpr float metres = 4;  // from a value to the next
constexpr float highest = 300;

// Metres above the sea, falling away to all sides.
HEIGHT_FIELD island()
{
    GRADIENT_NOISE const noise;
    HEIGHT_FIELD field(side, side);
    field.scale_x = field.scale_y = metres;
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x) {
            float const u = float(x) / (side - 1), v = float(y) / (side - 1);
            float const from_middle = std::hypot(2 * u - 1, 2 * v - 1);
            float const hills = noise.fractal_noise({u, v, 0.5f}, 7, 4, 1, 0, 0.48f, 2);
            field.row(y)[x] = std::clamp(highest * (0.65f + 0.5f * hills - from_middle), -40.0f, highest);
        }
    return field;
}

struct COLOUR {
    float red, green, blue;
};

COLOUR ground(float height, float steepness)
{
    COLOUR const sea{0.11f, 0.30f, 0.48f}, shore{0.80f, 0.74f, 0.55f}, grass{0.32f, 0.47f, 0.20f},
        rock{0.46f, 0.43f, 0.40f}, snow{0.94f, 0.95f, 0.97f};
    if (height < 0)
        return sea;
    if (height < 6)
        return shore;
    if (steepness > 0.75f)
        return rock;
    return height < 170 ? grass : height < 220 ? rock : snow;
}

std::uint8_t byte_of(float part) { return std::uint8_t(255 * std::clamp(part, 0.0f, 1.0f) + 0.5f); }

bool write_relief(HEIGHT_FIELD const &field, KN::String const &path)
{
    TYPED_IMAGE<KN::FORMAT_X8R8G8B8> image(field.width, field.height);
    for (unsigned y = 0; y < field.height; ++y)
        for (unsigned x = 0; x < field.width; ++x) {
            // The sea lies flat.
            auto const height = [&](unsigned column, unsigned row) {
                return std::max(
                    0.0f, field.row(std::min(row, field.height_minus_one))[std::min(column, field.width_minus_one)]);
            };
            float const right = (height(x + 1, y) - height(x, y)) / field.scale_x;
            float const down = (height(x, y + 1) - height(x, y)) / field.scale_y;
            float const length = std::sqrt(right * right + down * down + 1);
            float const light = 0.25f + 0.85f * std::max(0.0f, (right + down + 1.2f) / (length * 1.855f));
            COLOUR const colour = ground(field.row(y)[x], std::hypot(right, down));
            image.set_pixel(
                x, y, {byte_of(colour.blue * light), byte_of(colour.green * light), byte_of(colour.red * light), 255});
        }
    return image.write_tga(path, KN::TGA_R8G8B8);
}

bool write_bands(HEIGHT_FIELD const &field, KN::String const &path)
{
    constexpr float band = 25;
    PALETTE_IMAGE image(field.width, field.height, 1 + unsigned(highest / band) + 1);
    for (unsigned i = 0; i < image.palette.size(); ++i)
        image.palette[i] = i == 0 ? 0xff1c4d7a : 0xff000000 | (70 + 14 * i) << 16 | (120 + 8 * i) << 8 | (40 + 12 * i);
    // These files begin with the bottom row.
    for (unsigned y = 0; y < field.height; ++y)
        for (unsigned x = 0; x < field.width; ++x) {
            float const height = field.row(field.height_minus_one - y)[x];
            image.pixels[y * field.width + x] = height < 0 ? 0 : std::uint8_t(1 + height / band);
        }
    return image.write(path);
}

// How far the heights have moved through a file, in metres.
float largest_change(HEIGHT_FIELD const &field, HEIGHT_FIELD const &read, float min, float max)
{
    float largest = 0;
    for (unsigned i = 0; i < field.values.size(); ++i)
        largest = std::max(largest, std::fabs(min + (max - min) * read.values[i] - field.values[i]));
    return largest;
}

}  // namespace

int main(int count, char **arguments)
{
    if (count != 2) {
        std::cerr << "usage: height_field_pictures FOLDER\n";
        return 2;
    }
    KN::String const folder = arguments[1];
    HEIGHT_FIELD const field = island();
    float min, max;
    field.min_max(min, max);
    std::cout << "heights from " << min << " to " << max << " metres\n";

    HEIGHT_FIELD half, quarter;
    field.half_size(half);
    half.half_size(quarter);
    bool good = KN::make_directories(folder) && field.write_dds(folder + "/island.dds", &min, &max) &&
                field.write_tiff(folder + "/island.tif", &min, &max) && write_relief(field, folder + "/island.tga") &&
                write_bands(field, folder + "/island_bands.tga");
    for (float &value : quarter.values)
        value = std::max(value, 0.0f);
    good = good && quarter.write_tga_grey(folder + "/island_grey.tga", 255 / max);

    HEIGHT_FIELD read;
    KN::FileIn dds, tiff;
    good = good && dds.open(folder + "/island.dds", true) && read.read_dds(dds);
    if (good)
        std::cout << "largest change through DDS: " << largest_change(field, read, min, max) << " metres\n";
    good = good && tiff.open(folder + "/island.tif", true) && read.read_tiff(tiff);
    if (good)
        std::cout << "largest change through TIFF: " << largest_change(field, read, min, max) << " metres\n";
    else
        std::cerr << "the files could not be written to " << folder << " and read back\n";
    return good ? 0 : 1;
}
