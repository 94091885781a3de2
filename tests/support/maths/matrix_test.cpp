#include "support/maths/matrix.h"

#include <cfloat>
#include <gtest/gtest.h>

using namespace SUPPORT;

namespace {

// Exact in floats, so that products and inverses can be told exactly.
MATRIX44 const sheared = {{{1, 2, 0, 4}, {0, 1, 0, 8}, {0, 0, 2, -4}, {0, 0, 0, 1}}};

}  // namespace

TEST(Matrix, RotationMatrixTurnsAsTheQuaternionDoes)
{
    QUATERNION const q = normalised(QUATERNION{0.3f, -0.5f, 0.2f, 0.7f});
    VECTOR3 const v = {1, 2, 3}, by_matrix = rotation_matrix(q) * v, by_quaternion = rotated(v, q);
    EXPECT_LT(length(by_matrix - by_quaternion), 2e-6f);
    VECTOR3 const moved = transformed_point(local_matrix(q, {4, 5, 6}), v);
    EXPECT_LT(length(moved - (by_quaternion + VECTOR3{4, 5, 6})), 2e-6f);
}

TEST(Matrix, ProductsActOnColumns)
{
    MATRIX34 const a = local_matrix({0, 1, 0, 0}, {1, 2, 3});  // half a turn about y
    MATRIX34 const b = {{{0, -1, 0, 4}, {1, 0, 0, 5}, {0, 0, 2, 6}}};
    VECTOR3 const v = {7, 8, 9};
    EXPECT_EQ(transformed_point(a, transformed_point(b, v)), transformed_point(a * b, v));

    MATRIX44 const wide_a = {{{-1, 0, 0, 1}, {0, 1, 0, 2}, {0, 0, -1, 3}, {0, 0, 0, 1}}};
    MATRIX44 const wide = wide_a * sheared;
    EXPECT_EQ(transformed_point(wide_a, transformed_point(sheared, v)), transformed_point(wide, v));
    EXPECT_EQ((VECTOR4{-26, 18, -11, 1}), (wide * VECTOR4{7, 8, 9, 1}));

    MATRIX33 const left = {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}, right = {{{2, 0, 0}, {0, 3, 0}, {0, 0, 4}}};
    EXPECT_EQ((MATRIX33{{{0, 3, 0}, {0, 0, 4}, {2, 0, 0}}}), left * right);
    EXPECT_EQ((MATRIX33{{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}}), transposed(left));
}

TEST(Matrix, InverseOfASingularOneIsItself)
{
    EXPECT_EQ((MATRIX44{{{1, -2, 0, 12}, {0, 1, 0, -8}, {0, 0, 0.5f, 2}, {0, 0, 0, 1}}}), inverse_or_itself(sheared));
    MATRIX33 const turned = {{{0, 2, 0}, {0, 0, 4}, {8, 0, 0}}};
    EXPECT_EQ((MATRIX33{{{0, 0, 0.125f}, {0.5f, 0, 0}, {0, 0.25f, 0}}}), inverse_or_itself(turned));

    MATRIX44 const flat = {{{1, 2, 3, 4}, {2, 4, 6, 8}, {0, 1, 0, 0}, {0, 0, 0, 1}}};
    EXPECT_EQ(flat, inverse_or_itself(flat));
    MATRIX33 smallest = {{{FLT_MIN, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    EXPECT_EQ(1 / FLT_MIN, inverse_or_itself(smallest)[0][0]);
    smallest[0][0] = FLT_MIN / 2;
    EXPECT_EQ(smallest, inverse_or_itself(smallest));
}
