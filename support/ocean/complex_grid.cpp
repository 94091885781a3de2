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
    FOURIER_DIRECTION direction;
    KN_STD::VECTOR<std::uint32_t> place;  // of each cell when the bits of its index are reversed
    KN_STD::VECTOR<COMPLEX> factors;      // those of the stage with butterflies of span s begin at s - 1: s of them

    PLAN(unsigned log2_n, FOURIER_DIRECTION given) : direction(given), place(1u << log2_n), factors(1u << log2_n)
    {
        for (unsigned i = 1; i < place.size(); ++i)
            place[i] = place[i / 2] / 2 | (i & 1) << (log2_n - 1);
        find_factors(log2_n);
    }

private:
    void find_factors(unsigned log2_n);
};

void PLAN::find_factors(unsigned log2_n)
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

// The stages of span `span` and of twice that.
template <class F>
KERNEL void two_stages(CELL<F> *line, unsigned n, unsigned span, COMPLEX const *factors)
{
    COMPLEX const *const first = factors + span - 1, *const second = factors + 2 * span - 1;
    for (CELL<F> *group = line; group != line + n; group += 4 * span) {
        {
            CELL<F> a = group[0], b = group[span], c = group[2 * span], d = group[3 * span];
            butterfly(a, b);
            butterfly(c, d);
            butterfly(a, c);
            butterfly(b, d, second[span]);
            group[0] = a;
            group[span] = b;
            group[2 * span] = c;
            group[3 * span] = d;
        }
        for (unsigned j = 1; j < span; ++j) {
            CELL<F> *const at = group + j;
            CELL<F> a = at[0], b = at[span], c = at[2 * span], d = at[3 * span];
            butterfly(a, b, first[j]);
            butterfly(c, d, first[j]);
            butterfly(a, c, second[j]);
            butterfly(b, d, second[j + span]);
            at[0] = a;
            at[span] = b;
            at[2 * span] = c;
            at[3 * span] = d;
        }
    }
}

template <class F>
KERNEL void all_stages(CELL<F> *line, unsigned n, PLAN const &plan)
{
    COMPLEX const *const factors = plan.factors.data();
    unsigned span = 1;
    for (; 4 * span <= n; span *= 4)
        two_stages(line, n, span, factors);
    if (span < n)
        for (unsigned j = 0; j < span; ++j)
            butterfly(line[j], line[j + span], factors[span - 1 + j]);
    if (plan.direction == FOURIER_DIRECTION::FORWARD) {
        float const scale = 1 / float(n);
        for (unsigned i = 0; i < n; ++i)
            line[i] = {line[i].real * scale, line[i].imaginary * scale};
    }
}

// As many rows as there are lanes; they are turned over on their way into the lanes and back.
template <class F>
KERNEL void transform_rows(COMPLEX *rows, unsigned n, CELL<F> *line, PLAN const &plan)
{
    constexpr unsigned lanes = lanes_of<F>, cells_a_vector = lanes / 2;
    for (unsigned x = 0; x < n; x += cells_a_vector) {
        F square[lanes];
        for (unsigned lane = 0; lane < lanes; ++lane)
            load_lanes(square[lane], &rows[lane * n + x].real);
        turn_over(square);
        for (unsigned i = 0; i < cells_a_vector; ++i)
            line[plan.place[x + i]] = {square[2 * i], square[2 * i + 1]};
    }
    all_stages(line, n, plan);
    for (unsigned x = 0; x < n; x += cells_a_vector) {
        F square[lanes];
        for (unsigned i = 0; i < cells_a_vector; ++i) {
            square[2 * i] = line[x + i].real;
            square[2 * i + 1] = line[x + i].imaginary;
        }
        turn_over(square);
        for (unsigned lane = 0; lane < lanes; ++lane)
            store_lanes(square[lane], &rows[lane * n + x].real);
    }
}

// As many lines as there are lanes, side by side; their cells lie `stride` apart.
template <class F>
KERNEL void transform_lines(COMPLEX *lines, unsigned n, unsigned stride, CELL<F> *line, PLAN const &plan)
{
    for (unsigned i = 0; i < n; ++i) {
        CELL<F> &cell = line[plan.place[i]];
        load_apart(cell.real, cell.imaginary, lines + i * stride);
    }
    all_stages(line, n, plan);
    for (unsigned i = 0; i < n; ++i)
        store_together(line[i].real, line[i].imaginary, lines + i * stride);
}

template <class F>
KERNEL void transform_grid(COMPLEX_GRID &grid, PLAN const &plan)
{
    CELL<F> *const line = reinterpret_cast<CELL<F> *>(grid.scratch.data);
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
    PLAN const plan(log2_n, direction);
    if (n >= lanes_of<EIGHT_FLOATS> && eight_lanes())
        transform_by_eight(*this, plan);
    else if (n >= lanes_of<FOUR_FLOATS>)
        transform_grid<FOUR_FLOATS>(*this, plan);
    else
        transform_grid<float>(*this, plan);
}

}  // namespace SUPPORT
