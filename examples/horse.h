// The joints of a horse, 1.6 m high at the withers.
#pragma once

#include "examples/skin_kit.h"

namespace EXAMPLES::HORSE {

enum BONE : unsigned {
    ROOT,
    PELVIS,
    BACK,
    NECK,
    HEAD,
    TAIL,
    THIGH_LEFT,
    HIND_LEFT,
    THIGH_RIGHT,
    HIND_RIGHT,
    SHOULDER_LEFT,
    FORE_LEFT,
    SHOULDER_RIGHT,
    FORE_RIGHT,
};

// In the order of BONE.
std::span<JOINT const> joints();

}  // namespace EXAMPLES::HORSE
