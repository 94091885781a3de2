// Transforms of the import, in double precision, so that long chains of nodes do not wear a skin out.
#pragma once

#include <assimp/types.h>

using POSE_MATRIX = aiMatrix4x4t<double>;
using POSE_VECTOR = aiVector3t<double>;
using POSE_QUATERNION = aiQuaterniont<double>;

struct POSE {
    POSE_VECTOR translation;
    POSE_QUATERNION rotation;
    POSE_VECTOR scale = {1, 1, 1};

    POSE_MATRIX matrix() const;
    // Equal to about four digits, as transforms: opposite quaternions are the same turn.
    bool close_to(POSE const &other) const;
};

POSE_MATRIX wide(aiMatrix4x4 const &matrix);

// The nearest pose. `exact` becomes false if the matrix holds what no pose can: shear, or no extent in some direction.
POSE pose_of(POSE_MATRIX const &matrix, bool &exact);

// `matrix` in a world whose unit of length is `unit` times as long: distances shrink, turns and scales stay.
POSE_MATRIX in_unit(POSE_MATRIX matrix, double unit);
