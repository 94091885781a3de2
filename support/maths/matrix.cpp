#include "support/maths/matrix.h"

#include "support/maths/quaternion_kernel.h"

#include <cfloat>

namespace SUPPORT {

namespace {

template <class MATRIX, unsigned SIZE>
MATRIX product(MATRIX const &a, MATRIX const &b)
{
    MATRIX c;
    for (unsigned i = 0; i < SIZE; ++i)
        for (unsigned j = 0; j < SIZE; ++j) {
            c[i][j] = a[i][0] * b[0][j];
            for (unsigned k = 1; k < SIZE; ++k)
                c[i][j] += a[i][k] * b[k][j];
        }
    return c;
}

// The determinant of what is left of `a` without row `row` and column `column`.
float minor_of(MATRIX33 const &a, unsigned row, unsigned column)
{
    unsigned const r0 = row == 0 ? 1 : 0, r1 = row == 2 ? 1 : 2;
    unsigned const c0 = column == 0 ? 1 : 0, c1 = column == 2 ? 1 : 2;
    return a[r0][c0] * a[r1][c1] - a[r0][c1] * a[r1][c0];
}

float minor_of(MATRIX44 const &a, unsigned row, unsigned column)
{
    MATRIX33 left;
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j)
            left[i][j] = a[i < row ? i : i + 1][j < column ? j : j + 1];
    return left[0][0] * minor_of(left, 0, 0) - left[1][0] * minor_of(left, 1, 0) + left[2][0] * minor_of(left, 2, 0);
}

template <class MATRIX, unsigned SIZE>
MATRIX inverse(MATRIX const &a)
{
    MATRIX adjugate;
    for (unsigned i = 0; i < SIZE; ++i)
        for (unsigned j = 0; j < SIZE; ++j)
            adjugate[j][i] = (i + j) % 2 == 0 ? minor_of(a, i, j) : -minor_of(a, i, j);
    float determinant = a[0][0] * adjugate[0][0];
    for (unsigned i = 1; i < SIZE; ++i)
        determinant += a[i][0] * adjugate[0][i];
    if (!(std::abs(determinant) >= FLT_MIN))
        return a;
    for (unsigned i = 0; i < SIZE; ++i)
        for (unsigned j = 0; j < SIZE; ++j)
            adjugate[i][j] /= determinant;
    return adjugate;
}

template <class MATRIX>
VECTOR3 point(MATRIX const &a, VECTOR3 const &v)
{
    return {a[0][0] * v.x + a[0][1] * v.y + a[0][2] * v.z + a[0][3],
            a[1][0] * v.x + a[1][1] * v.y + a[1][2] * v.z + a[1][3],
            a[2][0] * v.x + a[2][1] * v.y + a[2][2] * v.z + a[2][3]};
}

}  // namespace

MATRIX33 operator*(MATRIX33 const &a, MATRIX33 const &b) { return product<MATRIX33, 3>(a, b); }
MATRIX44 operator*(MATRIX44 const &a, MATRIX44 const &b) { return product<MATRIX44, 4>(a, b); }

MATRIX34 operator*(MATRIX34 const &a, MATRIX34 const &b)
{
    MATRIX34 c;
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned j = 0; j < 4; ++j)
            c[i][j] = (a[i][0] * b[0][j] + a[i][1] * b[1][j]) + (a[i][2] * b[2][j] + (j == 3 ? a[i][3] : 0));
    }
    return c;
}

VECTOR4 operator*(MATRIX44 const &a, VECTOR4 const &v)
{
    auto const row = [&a, &v](unsigned i) { return a[i][0] * v.x + a[i][1] * v.y + a[i][2] * v.z + a[i][3] * v.w; };
    return {row(0), row(1), row(2), row(3)};
}

VECTOR3 transformed_point(MATRIX34 const &a, VECTOR3 const &v) { return point(a, v); }
VECTOR3 transformed_point(MATRIX44 const &a, VECTOR3 const &v) { return point(a, v); }

MATRIX33 transposed(MATRIX33 const &a)
{
    return {{{a[0][0], a[1][0], a[2][0]}, {a[0][1], a[1][1], a[2][1]}, {a[0][2], a[1][2], a[2][2]}}};
}

MATRIX33 rotation_matrix(QUATERNION const &q)
{
    MATRIX33 matrix;
    rotation_entries(COMPONENTS<float>{q.x, q.y, q.z, q.w}, matrix.m);
    return matrix;
}

MATRIX34 local_matrix(QUATERNION const &rotation, VECTOR3 const &translation)
{
    MATRIX33 const r = rotation_matrix(rotation);
    return {{{r[0][0], r[0][1], r[0][2], translation.x},
             {r[1][0], r[1][1], r[1][2], translation.y},
             {r[2][0], r[2][1], r[2][2], translation.z}}};
}

MATRIX33 inverse_or_itself(MATRIX33 const &a) { return inverse<MATRIX33, 3>(a); }
MATRIX44 inverse_or_itself(MATRIX44 const &a) { return inverse<MATRIX44, 4>(a); }

}  // namespace SUPPORT
