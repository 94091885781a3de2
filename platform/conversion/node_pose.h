// Node transforms taken apart, in double precision, so that long chains of nodes do not wear out.
#pragma once

#include "scene/values.h"

namespace TOOLDATABUILDER {

// What a matrix does to a point: scale, then turn, then move.
struct NODE_POSE {
    double translation[3] = {0, 0, 0};
    double rotation[4] = {0, 0, 0, 1};  // x, y, z, w; of length 1
    double scale[3] = {1, 1, 1};        // a mirroring matrix has a negative x
};

// Exact enough for nodes that were moved, turned and scaled one below the other. False if there is no finite inverse.
bool invert(VEX2_LOADER::VEX2_MATRIX const &from, double (&out)[3][4]);

// The pose of a matrix without shear; of one with shear, what is nearest column by column. The rotation is no number if
// the matrix has no extent in some direction.
NODE_POSE pose_of(double const (&matrix)[3][4]);
NODE_POSE pose_of(VEX2_LOADER::VEX2_MATRIX const &matrix);

}  // namespace TOOLDATABUILDER
