// noise_pictures FOLDER: the noises and the points of a disc as grey pictures (PGM), 512 by 512: noise.pgm (four cells
// that repeat), fractal.pgm, eroded.pgm (octaves held back where it is steep), disc.pgm (1,500 points).

#include "foundation/file.h"
#include "foundation/finished_file.h"
#include "support/numeric/disc_points.h"
#include "support/numeric/gradient_noise.h"

#include <algorithm>
#include <iostream>
#include <vector>

using namespace SUPPORT;

namespace {

constexpr unsigned side = 512;

// -1 to 1 at each pixel, rows from the top.
using FIELD = std::vector<float>;

bool write_picture(KN::String const &path, FIELD const &field)
{
    std::string bytes = "P5\n" + std::to_string(side) + " " + std::to_string(side) + "\n255\n";
    for (float value : field)
        bytes += char(std::clamp(int(127.5f + 127.5f * value), 0, 255));
    KN::String error;
    bool const written = KN::write_finished_file(path, bytes, error);
    if (!written)
        std::cerr << error << '\n';
    return written;
}

template <class VALUE>
FIELD field_of(VALUE const &value)
{
    FIELD field;
    for (unsigned y = 0; y < side; ++y)
        for (unsigned x = 0; x < side; ++x)
            field.push_back(value(float(x) / side, float(y) / side));
    return field;
}

FIELD tiles()
{
    GRADIENT_NOISE const noise({1, 1, 1}, 4, 4, 4);
    FIELD field(side * side);
    std::vector<float> xs(side);
    for (unsigned x = 0; x < side; ++x)
        xs[x] = 8 * float(x) / side;  // two repeats
    for (unsigned y = 0; y < side; ++y)
        noise.noise_row(xs, 8 * float(y) / side, 0.5f, {&field[y * side], side});
    return field;
}

// Steep ground gets less of the finer octaves, as if it had been worn off.
struct EROSION final : NOISE_CALLBACK {
    float operator()(VECTOR3 const &derivative_sum, float noise) override
    {
        return noise / (1 + dot(derivative_sum, derivative_sum));
    }
};

FIELD disc()
{
    FIELD field(side * side, -1);
    for (VECTOR2 const &point : disc_points({{side / 2, side / 2}, 240}, 1500))
        for (int y = -1; y <= 1; ++y)
            for (int x = -1; x <= 1; ++x)
                field[unsigned(int(point.y) + y) * side + unsigned(int(point.x) + x)] = 1;
    return field;
}

}  // namespace

int main(int count, char **arguments)
{
    if (count != 2) {
        std::cerr << "usage: noise_pictures FOLDER\n";
        return 2;
    }
    KN::String const folder = arguments[1];
    GRADIENT_NOISE const noise;
    EROSION erosion;
    FIELD const fractal = field_of([&](float x, float y) {
        return noise.fractal_noise({x, y, 0.3f}, 7, 4, 0.8f, 0.1f, 0.5f, 2);
    });
    FIELD const eroded = field_of([&](float x, float y) {
        return 2 * noise.fractal_noise_with_callback({3 * x, 3 * y, 0.3f}, 9, erosion);
    });
    bool const written = KN::make_directories(folder) && write_picture(folder + "/noise.pgm", tiles()) &&
                         write_picture(folder + "/fractal.pgm", fractal) &&
                         write_picture(folder + "/eroded.pgm", eroded) && write_picture(folder + "/disc.pgm", disc());
    return written ? 0 : 1;
}
