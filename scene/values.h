// The values that channels and vertices hold: plain runs of 32-bit floats, stored in the file field by field.
#pragma once

#include "scene/api.h"

namespace VEX2_LOADER {

struct SCENE_API VEX2_VECTOR2 {
    float x = 0, y = 0;
};

struct SCENE_API VEX2_VECTOR {
    float x = 0, y = 0, z = 0;
};

struct SCENE_API VEX2_VECTOR4 {
    float x = 0, y = 0, z = 0, w = 0;
};

struct SCENE_API VEX2_QUATERNION {
    float x = 0, y = 0, z = 0, w = 1;
};

struct SCENE_API VEX2_COLOUR {
    float red = 0, green = 0, blue = 0, alpha = 0;
};

struct SCENE_API VEX2_RANGE {
    float first = 0, second = 0;
};

struct SCENE_API VEX2_RECTANGLE {
    float left = 0, top = 0, right = 0, bottom = 0;
};

struct SCENE_API VEX2_VECTOR_PAIR {
    VEX2_VECTOR first, second;
};

// The directions in which the two texture coordinates of one UVW set grow: binormal that of v, tangent that of u.
struct SCENE_API VEX2_TANGENT_FRAME {
    VEX2_VECTOR binormal, tangent;
};

// Three rows of four, acting on column vectors: the left 3x3 turns and scales, the fourth column is the translation.
struct SCENE_API VEX2_MATRIX {
    float m[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};

    float *operator[](unsigned row) { return m[row]; }
    float const *operator[](unsigned row) const { return m[row]; }
};

inline VEX2_VECTOR operator+(VEX2_VECTOR const &a, VEX2_VECTOR const &b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }

}  // namespace VEX2_LOADER
