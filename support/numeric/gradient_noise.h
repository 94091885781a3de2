// GRADIENT_NOISE: smooth random values over space, by Perlin's improved gradient noise ("Improving Noise", 2002) on a
// lattice that repeats: random content for images, terrain and motion. The permutation is a fixed table that belongs to
// stored seeds, so a point has the same value, to the bit, on every machine. Values lie around 0, rarely beyond -1 and
// 1, and are 0 at every point of the lattice.
//
// Points are in units of the caller; `scale` turns them into cells of the lattice. Scaled coordinates are held within
// -2^31 and 2^31 - 128, one that is no number counts as -2^31. Const operations may run on many threads at once.
#pragma once

#include "support/maths/vector.h"

#include <cstdint>
#include <span>

namespace SUPPORT {

// Shapes the octaves of fractal_noise_with_callback.
class NOISE_CALLBACK {
public:
    // What the octave with value `noise` contributes, before its weight; `derivative_sum` is the sum of the
    // derivatives of the octaves up to this one.
    virtual float operator()(VECTOR3 const &derivative_sum, float noise) = 0;

protected:
    ~NOISE_CALLBACK() = default;
};

class GRADIENT_NOISE {
public:
    // No period may be 0. Between two repeats of a longer period the pattern comes again every 256 cells.
    explicit GRADIENT_NOISE(VECTOR3 const &scale = {1, 1, 1}, std::uint32_t period_x = 256,
                            std::uint32_t period_y = 256, std::uint32_t period_z = 256);

    float noise(float x, float y, float z) const;

    // The same value, with its three partial derivatives by x, y and z of the given point.
    float noise_with_derivative(VECTOR3 &derivative, float x, float y, float z) const;

    // values[n] = noise(xs[n], y, z), for as many as both hold; several times as fast where neighbours share a cell.
    // The spans may be the same memory.
    void noise_row(std::span<float const> xs, float y, float z, std::span<float> values) const;

    // The sum of `octaves` values noise(point * f + offset) * a, with f and a starting at `frequency` and `amplitude`
    // and multiplied by `lacunarity` and `gain` after each octave. `offset` is added to every coordinate.
    float fractal_noise(VECTOR3 const &point, unsigned octaves, float frequency, float amplitude, float offset,
                        float gain, float lacunarity) const;

    // The sum of what the callback makes of each octave, times weights that start at 0.5 and halve. The point doubles
    // after each octave.
    float fractal_noise_with_callback(VECTOR3 const &point, unsigned octaves, NOISE_CALLBACK &callback) const;

    VECTOR3 const scale;
    std::uint32_t const period[3];       // cells until the lattice repeats along x, y and z
    static VECTOR4 const gradients[16];  // x, y, z; w is 0

private:
    struct LINES;
    struct ROW_OF_CELLS;
    struct CORNERS;
    struct PLANE;

    template <class F>
    void fill_row(std::span<float const> xs, float y, float z, std::span<float> values) const;
    void fill_row_by_eight(std::span<float const> xs, float y, float z, std::span<float> values) const;

    std::uint32_t permutation[256];               // 0 to 255 each; some come up twice, others never
    alignas(16) VECTOR4 shuffled_gradients[256];  // gradients[permutation[i] & 15], in a single load
    alignas(16) float scale_lanes[4] = {};        // scale once more, likewise
    // Where all periods are powers of two, which is usual, these bits of a number are what is left of it.
    alignas(16) std::uint32_t wrap_mask[4] = {};
    bool wraps_by_mask = true;
};

}  // namespace SUPPORT
