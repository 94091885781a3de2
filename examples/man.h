// The body of a man: 18 joints and the parts around them. He stands with hanging arms.
#pragma once

#include "examples/skin_kit.h"

namespace EXAMPLES::MAN {

enum BONE : unsigned {
    ROOT,
    HIPS,
    SPINE,
    CHEST,
    NECK,
    HEAD,
    UPPER_ARM_LEFT,
    LOWER_ARM_LEFT,
    HAND_LEFT,
    UPPER_ARM_RIGHT,
    LOWER_ARM_RIGHT,
    HAND_RIGHT,
    THIGH_LEFT,
    SHIN_LEFT,
    FOOT_LEFT,
    THIGH_RIGHT,
    SHIN_RIGHT,
    FOOT_RIGHT,
};

// In the order of BONE.
std::span<JOINT const> joints();

// The looks, in the order in which they become the scene's materials.
enum MATERIAL { SKIN, TUNIC, TROUSERS, LEATHER, HEADGEAR, EYES };

enum class HAT { STRAW, HELMET };

// Buckle and hat have the material HEADGEAR.
std::vector<PART> parts(HAT hat);

}  // namespace EXAMPLES::MAN
