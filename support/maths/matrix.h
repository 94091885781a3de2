// Small matrices of 32-bit floats, row by row, acting on column vectors. MATRIX33 turns and scales; MATRIX34 has a
// translation as its fourth column and stands for a 4x4 matrix whose last row is 0, 0, 0, 1; MATRIX44 is a whole one.
// A new matrix is the identity.
#pragma once

#include "support/maths/quaternion.h"

namespace SUPPORT {

struct MATRIX33 {
    float m[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

    float *operator[](unsigned row) { return m[row]; }
    float const *operator[](unsigned row) const { return m[row]; }
    bool operator==(MATRIX33 const &) const = default;
};

struct MATRIX34 {
    float m[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};

    float *operator[](unsigned row) { return m[row]; }
    float const *operator[](unsigned row) const { return m[row]; }
    bool operator==(MATRIX34 const &) const = default;
};

struct MATRIX44 {
    float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    float *operator[](unsigned row) { return m[row]; }
    float const *operator[](unsigned row) const { return m[row]; }
    bool operator==(MATRIX44 const &) const = default;
};

MATHS_API MATRIX33 operator*(MATRIX33 const &a, MATRIX33 const &b);
MATHS_API MATRIX34 operator*(MATRIX34 const &a, MATRIX34 const &b);
MATHS_API MATRIX44 operator*(MATRIX44 const &a, MATRIX44 const &b);

inline VECTOR3 operator*(MATRIX33 const &a, VECTOR3 const &v)
{
    return {a[0][0] * v.x + a[0][1] * v.y + a[0][2] * v.z, a[1][0] * v.x + a[1][1] * v.y + a[1][2] * v.z,
            a[2][0] * v.x + a[2][1] * v.y + a[2][2] * v.z};
}

// `v` as a point: with 1 as its fourth coordinate. Of a MATRIX44 the last row is not regarded.
MATHS_API VECTOR3 transformed_point(MATRIX34 const &a, VECTOR3 const &v);
MATHS_API VECTOR3 transformed_point(MATRIX44 const &a, VECTOR3 const &v);
MATHS_API VECTOR4 operator*(MATRIX44 const &a, VECTOR4 const &v);

MATHS_API MATRIX33 transposed(MATRIX33 const &a);

// The matrix of the rotation `q`, from its components as they are: with a length of 1 it is orthogonal.
MATHS_API MATRIX33 rotation_matrix(QUATERNION const &q);
// Turned by `rotation`, then moved by `translation`.
MATHS_API MATRIX34 local_matrix(QUATERNION const &rotation, VECTOR3 const &translation);

// The adjugate over the determinant, by cofactors down the first column. A matrix whose determinant is smaller than the
// smallest normal float, 1.1754944e-38, or no number, is its own result.
MATHS_API MATRIX33 inverse_or_itself(MATRIX33 const &a);
MATHS_API MATRIX44 inverse_or_itself(MATRIX44 const &a);

}  // namespace SUPPORT
