#include "support/ocean/wave_spectrum.h"

#include "support/numeric/random_state.h"

namespace SUPPORT {

static float wave_power(float kx, float ky, WAVE_PARAMETERS const &waves)
{
    constexpr float e = 2.7182817f;
    float const k = std::sqrt(kx * kx + ky * ky);
    float const longest = waves.wind_speed * waves.wind_speed * 0.10121457f;  // that the wind keeps up
    float const shortest = longest * 0.001f;
    float const wind = kx / k * waves.wind_x + ky / k * waves.wind_y;
    return waves.amplitude * std::pow(e, -1 / ((k * longest) * (k * longest))) / (k * k * k * k) * (wind * wind) *
           std::pow(e, -(shortest * shortest * k * k));
}

void fill_spectrum(COMPLEX *cells, WAVE_NUMBERS const &numbers, WAVE_PARAMETERS const &waves)
{
    RANDOM_STATE random;
    for (std::uint32_t x = 0; x < numbers.n; ++x)
        for (std::uint32_t y = 0; y < numbers.n; ++y) {
            COMPLEX &cell = cells[y * numbers.n + x];
            if (numbers.column(x) == 0 && numbers.row(x, y) == 0) {
                cell = {};
                continue;
            }
            float const root = std::sqrt(wave_power(numbers.x_of(x), numbers.y_of(x, y), waves));
            gaussian_pair(random, cell.real, cell.imaginary);
            cell = {root * cell.real / 1.4142135f, root * cell.imaginary / 1.4142135f};
        }
}

}  // namespace SUPPORT
