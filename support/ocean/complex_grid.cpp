// Columns go abreast, in the lanes of vectors. Of a row, neighbouring cells stand in the lanes: the stages with the
// shortest spans are done across vectors that are later turned over, all others from vector to vector. Both do two
// stages at a time, on four vectors in registers; the first of them read, and the last write, the grid itself.

#include "support/ocean/complex_grid.h"

#include "foundation/containers.h"
#include "support/ocean/complex_lanes.h"

#include <bit>
#include <cassert>
#include <cmath>

namespace SUPPORT {

namespace {

struct PLAN {
    KN_STD::VECTOR<std::uint32_t> place;  // of each cell when the bits of its index are reversed
    // The factors of the stage with butterflies of span s begin at s - 1: s of them.
    KN_STD::VECTOR<float> factor_real, factor_imaginary;

    PLAN(unsigned log2_n, FOURIER_DIRECTION direction);
};

PLAN::PLAN(unsigned log2_n, FOURIER_DIRECTION direction) : place(1u << log2_n)
{
    for (unsigned i = 1; i < place.size(); ++i)
        place[i] = place[i / 2] / 2 | (i & 1) << (log2_n - 1);
    float c1 = -1, c2 = 0;
    for (unsigned stage = 0; stage < log2_n; ++stage) {
        float u1 = 1, u2 = 0;
        for (unsigned j = 0; j < 1u << stage; ++j) {
            factor_real.push_back(u1);
            factor_imaginary.push_back(u2);
            float const turned = u1 * c1 - u2 * c2;
            u2 = u1 * c2 + u2 * c1;
            u1 = turned;
        }
        c2 = std::sqrt((1 - c1) / 2);
        if (direction == FOURIER_DIRECTION::FORWARD)
            c2 = -c2;
        c1 = std::sqrt((1 + c1) / 2);
    }
}

template <class F>
struct CELL {
    F real, imaginary;
};

// T: F, or float for the same factor in all lanes.
template <class F, class T>
KERNEL void butterfly(CELL<F> &a, CELL<F> &b, CELL<T> const &factor)
{
    F const t1 = factor.real * b.real - factor.imaginary * b.imaginary;
    F const t2 = factor.real * b.imaginary + factor.imaginary * b.real;
    b = {a.real - t1, a.imaginary - t2};
    a = {a.real + t1, a.imaginary + t2};
}

// With the factor 1.
template <class F>
KERNEL void butterfly(CELL<F> &a, CELL<F> &b)
{
    CELL<F> const t = b;
    b = {a.real - t.real, a.imaginary - t.imaginary};
    a = {a.real + t.real, a.imaginary + t.imaginary};
}

// A line, or lines abreast, as they stand in `scratch`.
template <class F>
struct IN_LANES {
    CELL<F> *line;

    KERNEL void get(CELL<F> &cell, unsigned i) const
    {
        cell.real = line[i].real;
        cell.imaginary = line[i].imaginary;
    }
    KERNEL void put(unsigned i, CELL<F> const &cell) const
    {
        line[i].real = cell.real;
        line[i].imaginary = cell.imaginary;
    }
};

// Lines side by side in a grid, their cells `stride` apart; they are taken by reversed indices and put in order.
template <class F>
struct IN_GRID {
    COMPLEX *lines;
    unsigned stride;
    std::uint32_t const *place;

    KERNEL void get(CELL<F> &cell, unsigned i) const
    {
        load_apart(cell.real, cell.imaginary, lines + place[i] * stride);
    }
    KERNEL void put(unsigned i, CELL<F> const &cell) const
    {
        store_together(cell.real, cell.imaginary, lines + i * stride);
    }
};

// A row, a vector after the other.
template <class F>
struct IN_ROW {
    COMPLEX *row;

    KERNEL void put(unsigned i, CELL<F> const &cell) const
    {
        store_together(cell.real, cell.imaginary, row + i * lanes_of<F>);
    }
};

// Of lines abreast: butterfly j of a span has one factor for all, the first of them 1.
struct FACTORS_OF_LINES {
    using FACTOR = CELL<float>;
    static constexpr bool first_is_one = true;
    float const *real, *imaginary;

    KERNEL void get(FACTOR &factor, unsigned span, unsigned j) const
    {
        factor.real = real[span - 1 + j];
        factor.imaginary = imaginary[span - 1 + j];
    }
};

// Of a row: spans and butterflies are counted in vectors, and each lane has a factor.
template <class F>
struct FACTORS_OF_ROW {
    using FACTOR = CELL<F>;
    static constexpr bool first_is_one = false;
    float const *real, *imaginary;

    KERNEL void get(FACTOR &factor, unsigned span, unsigned j) const
    {
        load_lanes(factor.real, real + (span + j) * lanes_of<F> - 1);
        load_lanes(factor.imaginary, imaginary + (span + j) * lanes_of<F> - 1);
    }
};

// The stage of span 1.
template <class F, class FROM, class TO, class FACTORS>
KERNEL void first_stage(FROM const &from, TO const &to, unsigned n, FACTORS const &factors)
{
    typename FACTORS::FACTOR factor;
    factors.get(factor, 1, 0);
    for (unsigned i = 0; i < n; i += 2) {
        CELL<F> a, b;
        from.get(a, i);
        from.get(b, i + 1);
        if constexpr (FACTORS::first_is_one)
            butterfly(a, b);
        else
            butterfly(a, b, factor);
        to.put(i, a);
        to.put(i + 1, b);
    }
}

// The stages of span `span` and of twice that.
template <class F, class FROM, class TO, class FACTORS>
KERNEL void two_stages(FROM const &from, TO const &to, unsigned n, unsigned span, FACTORS const &factors)
{
    for (unsigned group = 0; group < n; group += 4 * span)
        for (unsigned j = 0; j < span; ++j) {
            unsigned const i = group + j;
            CELL<F> a, b, c, d;
            from.get(a, i);
            from.get(b, i + span);
            from.get(c, i + 2 * span);
            from.get(d, i + 3 * span);
            typename FACTORS::FACTOR first, second, third;
            factors.get(third, 2 * span, j + span);
            if (FACTORS::first_is_one && j == 0) {
                butterfly(a, b);
                butterfly(c, d);
                butterfly(a, c);
            } else {
                factors.get(first, span, j);
                factors.get(second, 2 * span, j);
                butterfly(a, b, first);
                butterfly(c, d, first);
                butterfly(a, c, second);
            }
            butterfly(b, d, third);
            to.put(i, a);
            to.put(i + span, b);
            to.put(i + 2 * span, c);
            to.put(i + 3 * span, d);
        }
}

// All stages from span 1 on. The first read `from`, the last write `to`; between them the line stands in `line`.
template <class F, class FROM, class TO, class FACTORS>
KERNEL void all_stages(FROM const &from, IN_LANES<F> const &line, TO const &to, unsigned n, FACTORS const &factors)
{
    if (n == 2) {
        first_stage<F>(from, to, n, factors);
        return;
    }
    if (n == 4) {
        two_stages<F>(from, to, n, 1, factors);
        return;
    }
    unsigned span;
    if (std::countr_zero(n) % 2 != 0) {
        first_stage<F>(from, line, n, factors);
        span = 2;
    } else {
        two_stages<F>(from, line, n, 1, factors);
        span = 4;
    }
    for (; 4 * span < n; span *= 4)
        two_stages<F>(line, line, n, span, factors);
    two_stages<F>(line, to, n, span, factors);
}

// As many lines as there are lanes, side by side; their cells lie `stride` apart.
template <class F>
KERNEL void transform_lines(COMPLEX *lines, unsigned n, unsigned stride, IN_LANES<F> const &line, PLAN const &plan)
{
    IN_GRID<F> const in_grid{lines, stride, plan.place.data()};
    all_stages(in_grid, line, in_grid, n, FACTORS_OF_LINES{plan.factor_real.data(), plan.factor_imaginary.data()});
}

constexpr unsigned reversed_of_four[] = {0, 2, 1, 3};
constexpr unsigned reversed_of_eight[] = {0, 4, 2, 6, 1, 5, 3, 7};

// One row of at least as many vectors as there are lanes. Cells whose indices differ in the upper bits alone, that is
// one of each vector of a square, are neighbours when the bits are reversed.
template <class F>
KERNEL void transform_row(COMPLEX *row, unsigned n, IN_LANES<F> const &line, PLAN const &plan)
{
    constexpr unsigned lanes = lanes_of<F>;
    FACTORS_OF_LINES const short_factors{plan.factor_real.data(), plan.factor_imaginary.data()};
    for (unsigned x = 0; x < n / lanes; x += lanes) {
        CELL<F> square[lanes];
        for (unsigned i = 0; i < lanes; ++i) {
            CELL<F> &cell = square[lanes == 8 ? reversed_of_eight[i] : reversed_of_four[i % 4]];
            load_apart(cell.real, cell.imaginary, row + i * (n / lanes) + x);
        }
        for (unsigned span = 1; span < lanes; span *= 2)
            for (unsigned group = 0; group < lanes; group += 2 * span)
                for (unsigned j = 0; j < span; ++j) {
                    CELL<float> factor;
                    short_factors.get(factor, span, j);
                    if (j == 0)
                        butterfly(square[group], square[group + span]);
                    else
                        butterfly(square[group + j], square[group + j + span], factor);
                }
        F reals[lanes], imaginaries[lanes];
        for (unsigned i = 0; i < lanes; ++i) {
            reals[i] = square[i].real;
            imaginaries[i] = square[i].imaginary;
        }
        turn_over(reals);
        turn_over(imaginaries);
        for (unsigned i = 0; i < lanes; ++i)
            line.put(plan.place[x + i] / lanes, {reals[i], imaginaries[i]});
    }
    all_stages(line, line, IN_ROW<F>{row}, n / lanes,
               FACTORS_OF_ROW<F>{plan.factor_real.data(), plan.factor_imaginary.data()});
}

template <class F>
KERNEL void transform_grid(COMPLEX_GRID &grid, PLAN const &plan)
{
    IN_LANES<F> const line{reinterpret_cast<CELL<F> *>(grid.scratch.data)};
    unsigned const n = grid.n;
    for (unsigned y = 0; y < n; ++y) {
        if constexpr (lanes_of<F> == 1)
            transform_lines(grid.cells.data + y * n, n, 1, line, plan);
        else
            transform_row(grid.cells.data + y * n, n, line, plan);
    }
    for (unsigned x = 0; x < n; x += lanes_of<F>)
        transform_lines(grid.cells.data + x, n, n, line, plan);
}

WITH_EIGHT_LANES void transform_by_eight(COMPLEX_GRID &grid, PLAN const &plan)
{
    transform_grid<EIGHT_FLOATS>(grid, plan);
}

// Whether a row has enough vectors.
template <class F>
bool is_wide_enough(unsigned n)
{
    return n >= lanes_of<F> * lanes_of<F>;
}

}  // namespace

void COMPLEX_GRID::allocate(std::uint32_t side)
{
    assert(std::has_single_bit(side) && side <= 1u << 15);
    free();
    n = side;
    log2_n = unsigned(std::countr_zero(side));
    cells.resize(n * n);
    scratch.resize(2 * n);
}

void COMPLEX_GRID::free()
{
    n = log2_n = 0;
    cells.clear();
    scratch.clear();
}

void COMPLEX_GRID::transform(FOURIER_DIRECTION direction)
{
    if (n < 2)
        return;
    PLAN const plan(log2_n, direction);
    if (is_wide_enough<EIGHT_FLOATS>(n) && eight_lanes())
        transform_by_eight(*this, plan);
    else if (is_wide_enough<FOUR_FLOATS>(n))
        transform_grid<FOUR_FLOATS>(*this, plan);
    else
        transform_grid<float>(*this, plan);
    if (direction == FOURIER_DIRECTION::FORWARD) {
        float const scale = 1 / (float(n) * float(n));  // for rows and columns; exact, as n is a power of two
        for (COMPLEX &cell : cells)
            cell = {cell.real * scale, cell.imaginary * scale};
    }
}

}  // namespace SUPPORT
