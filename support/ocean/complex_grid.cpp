// A group of lines stands in `scratch` with the lanes of one vector for the same cell of all lines: first the real,
// then the imaginary parts. Two stages are done at a time, on four cells in registers.

#include "support/ocean/complex_grid.h"

#include "support/ocean/complex_lanes.h"

#include "foundation/containers.h"

#include <bit>
#include <cassert>
#include <cmath>

namespace SUPPORT {

namespace {

struct PLAN {
    KN_STD::VECTOR<std::uint32_t> place;  // of each cell when the bits of its index are reversed
    KN_STD::VECTOR<COMPLEX> factors;      // those of the stage with butterflies of span s begin at s - 1: s of them

    PLAN(unsigned log2_n, FOURIER_DIRECTION direction) : place(1u << log2_n), factors((1u << log2_n) - 1)
    {
        for (unsigned i = 1; i < place.size(); ++i)
            place[i] = place[i / 2] / 2 | (i & 1) << (log2_n - 1);
        find_factors(log2_n, direction);
    }

private:
    void find_factors(unsigned log2_n, FOURIER_DIRECTION direction);
};

void PLAN::find_factors(unsigned log2_n, FOURIER_DIRECTION direction)
{
    COMPLEX *next = factors.data();
    float c1 = -1, c2 = 0;
    for (unsigned stage = 0; stage < log2_n; ++stage) {
        float u1 = 1, u2 = 0;
        for (unsigned j = 0; j < 1u << stage; ++j) {
            *next++ = {u1, u2};
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

template <class F>
KERNEL void butterfly(CELL<F> &a, CELL<F> &b, COMPLEX const &factor)
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

// Lines as they stand in `scratch`.
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

template <class F, class FROM, class TO>
KERNEL void first_stage(FROM const &from, TO const &to, unsigned n)
{
    for (unsigned i = 0; i < n; i += 2) {
        CELL<F> a, b;
        from.get(a, i);
        from.get(b, i + 1);
        butterfly(a, b);
        to.put(i, a);
        to.put(i + 1, b);
    }
}

// The stages of span `span` and of twice that.
template <class F, class FROM, class TO>
KERNEL void two_stages(FROM const &from, TO const &to, unsigned n, unsigned span, COMPLEX const *factors)
{
    COMPLEX const *const first = factors + span - 1, *const second = factors + 2 * span - 1;
    for (unsigned group = 0; group < n; group += 4 * span)
        for (unsigned j = 0; j < span; ++j) {
            unsigned const i = group + j;
            CELL<F> a, b, c, d;
            from.get(a, i);
            from.get(b, i + span);
            from.get(c, i + 2 * span);
            from.get(d, i + 3 * span);
            if (j == 0) {
                butterfly(a, b);
                butterfly(c, d);
                butterfly(a, c);
            } else {
                butterfly(a, b, first[j]);
                butterfly(c, d, first[j]);
                butterfly(a, c, second[j]);
            }
            butterfly(b, d, second[j + span]);
            to.put(i, a);
            to.put(i + span, b);
            to.put(i + 2 * span, c);
            to.put(i + 3 * span, d);
        }
}

// The first stages read `from`, the last write `to`; between them the lines stand in `line`.
template <class F, class FROM, class TO>
KERNEL void all_stages(FROM const &from, IN_LANES<F> const &line, TO const &to, unsigned n, COMPLEX const *factors)
{
    if (n == 2) {
        first_stage<F>(from, to, n);
        return;
    }
    if (n == 4) {
        two_stages<F>(from, to, n, 1, factors);
        return;
    }
    unsigned span;
    if (std::countr_zero(n) % 2 != 0) {
        first_stage<F>(from, line, n);
        span = 2;
    } else {
        two_stages<F>(from, line, n, 1, factors);
        span = 4;
    }
    for (; 4 * span < n; span *= 4)
        two_stages<F>(line, line, n, span, factors);
    two_stages<F>(line, to, n, span, factors);
}

// As many rows as there are lanes; they are turned over on their way into the lanes and back.
template <class F>
KERNEL void transform_rows(COMPLEX *rows, unsigned n, IN_LANES<F> const &line, PLAN const &plan)
{
    constexpr unsigned lanes = lanes_of<F>, cells_a_vector = lanes / 2;
    for (unsigned x = 0; x < n; x += cells_a_vector) {
        F square[lanes];
        for (unsigned lane = 0; lane < lanes; ++lane)
            load_lanes(square[lane], &rows[lane * n + x].real);
        turn_over(square);
        for (unsigned i = 0; i < cells_a_vector; ++i)
            line.put(plan.place[x + i], {square[2 * i], square[2 * i + 1]});
    }
    all_stages(line, line, line, n, plan.factors.data());
    for (unsigned x = 0; x < n; x += cells_a_vector) {
        F square[lanes];
        for (unsigned i = 0; i < cells_a_vector; ++i) {
            CELL<F> cell;
            line.get(cell, x + i);
            square[2 * i] = cell.real;
            square[2 * i + 1] = cell.imaginary;
        }
        turn_over(square);
        for (unsigned lane = 0; lane < lanes; ++lane)
            store_lanes(square[lane], &rows[lane * n + x].real);
    }
}

template <class F>
KERNEL void transform_lines(COMPLEX *lines, unsigned n, unsigned stride, IN_LANES<F> const &line, PLAN const &plan)
{
    IN_GRID<F> const in_grid{lines, stride, plan.place.data()};
    all_stages(in_grid, line, in_grid, n, plan.factors.data());
}

template <class F>
KERNEL void transform_grid(COMPLEX_GRID &grid, PLAN const &plan)
{
    IN_LANES<F> const line{reinterpret_cast<CELL<F> *>(grid.scratch.data)};
    unsigned const n = grid.n;
    for (unsigned y = 0; y < n; y += lanes_of<F>) {
        if constexpr (lanes_of<F> == 1)
            transform_lines(grid.cells.data + y * n, n, 1, line, plan);
        else
            transform_rows(grid.cells.data + y * n, n, line, plan);
    }
    for (unsigned x = 0; x < n; x += lanes_of<F>)
        transform_lines(grid.cells.data + x, n, n, line, plan);
}

WITH_EIGHT_LANES void transform_by_eight(COMPLEX_GRID &grid, PLAN const &plan)
{
    transform_grid<EIGHT_FLOATS>(grid, plan);
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
    if (n >= lanes_of<EIGHT_FLOATS> && eight_lanes())
        transform_by_eight(*this, plan);
    else if (n >= lanes_of<FOUR_FLOATS>)
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
