#include "platform/conversion/node_pose.h"

#include <cmath>

using VEX2_LOADER::VEX2_MATRIX;

namespace TOOLDATABUILDER {

bool invert(VEX2_MATRIX const &from, double (&out)[3][4])
{
    double m[3][4];
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 4; ++c)
            m[r][c] = double(from[unsigned(r)][c]);
    double cofactor[3][3];
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            cofactor[r][c] = m[(r + 1) % 3][(c + 1) % 3] * m[(r + 2) % 3][(c + 2) % 3] -
                             m[(r + 1) % 3][(c + 2) % 3] * m[(r + 2) % 3][(c + 1) % 3];
    double const determinant = m[0][0] * cofactor[0][0] + m[0][1] * cofactor[0][1] + m[0][2] * cofactor[0][2];
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c)
            out[r][c] = cofactor[c][r] / determinant;
        out[r][3] = -(out[r][0] * m[0][3] + out[r][1] * m[1][3] + out[r][2] * m[2][3]);
        if (!std::isfinite(float(out[r][0] + out[r][1] + out[r][2] + out[r][3])))
            return false;
    }
    return true;
}

NODE_POSE pose_of(double const (&m)[3][4])
{
    NODE_POSE pose;
    double axis[3][3];  // the columns, made perpendicular
    for (int c = 0; c < 3; ++c) {
        pose.translation[c] = m[c][3];
        double v[3] = {m[0][c], m[1][c], m[2][c]};
        pose.scale[c] = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        for (int p = 0; p < c; ++p) {
            double const along = v[0] * axis[p][0] + v[1] * axis[p][1] + v[2] * axis[p][2];
            for (int r = 0; r < 3; ++r)
                v[r] -= along * axis[p][r];
        }
        double const left = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        for (int r = 0; r < 3; ++r)
            axis[c][r] = v[r] / left;
    }
    double const across[3] = {axis[0][1] * axis[1][2] - axis[0][2] * axis[1][1],
                              axis[0][2] * axis[1][0] - axis[0][0] * axis[1][2],
                              axis[0][0] * axis[1][1] - axis[0][1] * axis[1][0]};
    if (across[0] * axis[2][0] + across[1] * axis[2][1] + across[2] * axis[2][2] < 0) {
        pose.scale[0] = -pose.scale[0];
        for (double &part : axis[0])
            part = -part;
    }

    // From the rotation to its quaternion, starting at the largest component so that nothing small is divided by.
    double const diagonal[3] = {axis[0][0], axis[1][1], axis[2][2]};
    double const trace = diagonal[0] + diagonal[1] + diagonal[2];
    double(&q)[4] = pose.rotation;
    if (trace > 0) {
        q[3] = 1 + trace;
        q[0] = axis[1][2] - axis[2][1];
        q[1] = axis[2][0] - axis[0][2];
        q[2] = axis[0][1] - axis[1][0];
    } else {
        int const i =
            diagonal[1] > diagonal[0] ? (diagonal[2] > diagonal[1] ? 2 : 1) : (diagonal[2] > diagonal[0] ? 2 : 0);
        int const j = (i + 1) % 3, k = (i + 2) % 3;
        q[i] = 1 + diagonal[i] - diagonal[j] - diagonal[k];
        q[j] = axis[i][j] + axis[j][i];
        q[k] = axis[i][k] + axis[k][i];
        q[3] = axis[j][k] - axis[k][j];
    }
    double const length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    for (double &component : q)
        component /= length;
    return pose;
}

NODE_POSE pose_of(VEX2_MATRIX const &matrix)
{
    double m[3][4];
    for (unsigned r = 0; r < 3; ++r)
        for (unsigned c = 0; c < 4; ++c)
            m[r][c] = double(matrix[r][c]);
    return pose_of(m);
}

}  // namespace TOOLDATABUILDER
