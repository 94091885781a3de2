// How scene quantities become glTF quantities, for every file of either direction. Both spaces are right-handed with y
// up, in metres, with counter-clockwise front faces and matrices that act on column vectors, so positions, normals,
// rotations and winding are taken as they are. What differs is the texture coordinate: v runs up in a scene and down in
// glTF; and the frame: a scene keeps both directions, glTF one and the side on which the other lies.
#pragma once

namespace GLTF {

// Its own inverse.
inline float turned_v(float v) { return 1.0f - v; }

// TANGENT.w: +1 if cross(normal, tangent) points along the binormal (that of v running up), else -1.
inline float handedness(float const (&normal)[3], float const (&tangent)[3], float const (&binormal)[3])
{
    float const across[3] = {normal[1] * tangent[2] - normal[2] * tangent[1],
                             normal[2] * tangent[0] - normal[0] * tangent[2],
                             normal[0] * tangent[1] - normal[1] * tangent[0]};
    return across[0] * binormal[0] + across[1] * binormal[1] + across[2] * binormal[2] < 0 ? -1.0f : 1.0f;
}

}  // namespace GLTF
