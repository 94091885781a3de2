#include "platform/exchange/pose.h"

#include <algorithm>
#include <cmath>

POSE_MATRIX POSE::matrix() const { return POSE_MATRIX(scale, rotation, translation); }

bool POSE::close_to(POSE const &other) const
{
    auto const near = [](double a, double b) { return std::abs(a - b) <= 1e-4 * std::max({1.0, std::abs(a)}); };
    POSE_QUATERNION const &a = rotation, &b = other.rotation;
    double const dot = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
    return near(translation.x, other.translation.x) && near(translation.y, other.translation.y) &&
           near(translation.z, other.translation.z) && near(scale.x, other.scale.x) && near(scale.y, other.scale.y) &&
           near(scale.z, other.scale.z) && std::abs(dot) >= 1 - 1e-8;
}

POSE_MATRIX wide(aiMatrix4x4 const &m)
{
    return POSE_MATRIX(m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4);
}

POSE pose_of(POSE_MATRIX const &matrix, bool &exact)
{
    POSE pose;
    double columns[3][3], lengths[3];
    double largest = 0;
    for (int c = 0; c < 3; ++c) {
        for (int r = 0; r < 3; ++r)
            columns[c][r] = matrix[unsigned(r)][c];
        lengths[c] = std::hypot(columns[c][0], columns[c][1], columns[c][2]);
        largest = std::max(largest, lengths[c]);
    }
    pose.translation = {matrix.a4, matrix.b4, matrix.c4};
    pose.scale = {lengths[0], lengths[1], lengths[2]};
    exact = true;
    if (!(std::min({lengths[0], lengths[1], lengths[2]}) > 1e-12 * largest)) {
        exact = false;  // flattened: the turn is lost
        return pose;
    }
    if (matrix.Determinant() < 0)
        pose.scale *= -1;

    aiMatrix3x3t<double> turn;
    for (unsigned c = 0; c < 3; ++c)
        for (unsigned r = 0; r < 3; ++r)
            turn[r][c] = columns[c][r] / pose.scale[c];
    for (unsigned a = 0; a < 3; ++a) {
        unsigned const b = (a + 1) % 3;
        double const lean = turn[0][a] * turn[0][b] + turn[1][a] * turn[1][b] + turn[2][a] * turn[2][b];
        exact &= std::abs(lean) <= 1e-3;
    }
    pose.rotation = POSE_QUATERNION(turn);
    pose.rotation.Normalize();
    return pose;
}

POSE_MATRIX in_unit(POSE_MATRIX matrix, double unit)
{
    matrix.a4 *= unit;
    matrix.b4 *= unit;
    matrix.c4 *= unit;
    return matrix;
}
