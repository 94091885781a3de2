#include "support/maths/lanes.h"
#include "support/ocean/complex_grid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

using namespace SUPPORT;

namespace {

COMPLEX_GRID made_grid(std::uint32_t n)
{
    COMPLEX_GRID grid;
    grid.allocate(n);
    std::mt19937 random(n);
    std::uniform_real_distribution<float> any(-1, 1);
    for (COMPLEX &cell : grid.cells)
        cell = {any(random), any(random)};
    return grid;
}

// One line, one butterfly after the other, the factor stepped on its way.
void transform_plainly(std::vector<COMPLEX> &line, bool forward)
{
    std::size_t const n = line.size();
    for (std::size_t i = 0, j = 0; i < n; ++i) {
        if (i < j)
            std::swap(line[i], line[j]);
        std::size_t bit = n / 2;
        for (; bit > 0 && (j & bit) != 0; bit /= 2)
            j ^= bit;
        j ^= bit;
    }
    float c1 = -1, c2 = 0;
    for (std::size_t half = 1; half < n; half *= 2) {
        float u1 = 1, u2 = 0;
        for (std::size_t j = 0; j < half; ++j) {
            for (std::size_t i = j; i < n; i += 2 * half) {
                COMPLEX &a = line[i], &b = line[i + half];
                COMPLEX const t = {u1 * b.real - u2 * b.imaginary, u1 * b.imaginary + u2 * b.real};
                b = {a.real - t.real, a.imaginary - t.imaginary};
                a = {a.real + t.real, a.imaginary + t.imaginary};
            }
            float const turned = u1 * c1 - u2 * c2;
            u2 = u1 * c2 + u2 * c1;
            u1 = turned;
        }
        c2 = std::sqrt((1 - c1) / 2) * (forward ? -1 : 1);
        c1 = std::sqrt((1 + c1) / 2);
    }
    for (COMPLEX &cell : line)
        if (forward)
            cell = {cell.real * (1 / float(n)), cell.imaginary * (1 / float(n))};
}

}  // namespace

TEST(ComplexGrid, IsTheDirectSum)
{
    for (std::uint32_t const n : {1u, 2u, 4u, 8u, 16u})
        for (FOURIER_DIRECTION const direction : {FOURIER_DIRECTION::FORWARD, FOURIER_DIRECTION::INVERSE}) {
            bool const forward = direction == FOURIER_DIRECTION::FORWARD;
            COMPLEX_GRID const before = made_grid(n);
            COMPLEX_GRID after = made_grid(n);
            after.transform(direction);
            for (std::uint32_t cell = 0; cell < n * n; ++cell) {
                std::complex<double> sum = 0;
                for (std::uint32_t other = 0; other < n * n; ++other) {
                    double const turns = double((cell % n) * (other % n) + (cell / n) * (other / n)) / n;
                    sum +=
                        std::complex<double>(double(before.cells[other].real), double(before.cells[other].imaginary)) *
                        std::polar(1.0, (forward ? -2 : 2) * M_PI * turns);
                }
                if (forward)
                    sum /= n * n;
                EXPECT_NEAR(after.cells[cell].real, sum.real(), 1e-5 * (forward ? 1 : n)) << n << " at " << cell;
                EXPECT_NEAR(after.cells[cell].imaginary, sum.imag(), 1e-5 * (forward ? 1 : n)) << n << " at " << cell;
            }
        }
}

TEST(ComplexGrid, LinesAbreastHaveTheBitsOfOneAlone)
{
    for (std::uint32_t const n : {2u, 4u, 8u, 32u, 128u, 256u})
        for (FOURIER_DIRECTION const direction : {FOURIER_DIRECTION::FORWARD, FOURIER_DIRECTION::INVERSE}) {
            COMPLEX_GRID plain = made_grid(n);
            for (bool const rows : {true, false})
                for (std::uint32_t i = 0; i < n; ++i) {
                    auto const cell = [&](std::uint32_t j) -> COMPLEX & {
                        return plain.cells[rows ? i * n + j : j * n + i];
                    };
                    std::vector<COMPLEX> line(n);
                    for (std::uint32_t j = 0; j < n; ++j)
                        line[j] = cell(j);
                    transform_plainly(line, direction == FOURIER_DIRECTION::FORWARD);
                    for (std::uint32_t j = 0; j < n; ++j)
                        cell(j) = line[j];
                }
            for (bool const wide : {false, true}) {
                allow_eight_lanes(wide);
                COMPLEX_GRID grid = made_grid(n);
                grid.transform(direction);
                unsigned wrong = 0;
                for (std::uint32_t i = 0; i < n * n; ++i)
                    wrong += grid.cells[i].real != plain.cells[i].real ||
                             grid.cells[i].imaginary != plain.cells[i].imaginary;
                EXPECT_EQ(wrong, 0u) << n << (wide ? " wide" : "");
            }
            allow_eight_lanes(true);
        }
}
