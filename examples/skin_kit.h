// Figures: joints, and the parts of a body whose corners follow one joint, or two around the bend between them.
#pragma once

#include "examples/scene_kit.h"

#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace EXAMPLES {

struct JOINT {
    std::u16string_view name;
    int parent;         // index; -1: none
    VEX2_VECTOR place;  // in the figure's space: it stands on the ground at the origin and looks along +z
};

// Which joints move a corner: `upper` alone above the bend, `lower` alone below it.
struct BEND {
    unsigned upper, lower;
    float height, reach;  // of the bend, and how far the transition goes up and down from it
};

inline BEND stiff(unsigned joint) { return {joint, joint, 0, 1}; }

struct PART {
    int material;
    SHAPE shape;
    BEND bend;
};

SHAPE lofted(std::initializer_list<RING> rings, unsigned sides, EDGES edges = EDGES::SMOOTH);
SHAPE ball(VEX2_VECTOR const &middle, VEX2_VECTOR const &radii, unsigned sides);

// Appends a node a joint, each with `prefix` in front of its name. Those without a parent hang at `place` on the node
// `top`, or on none if that is -1. The index of the first.
unsigned add_joints(VEX2 &scene, std::span<JOINT const> joints, std::u16string_view prefix = u"", int top = -1,
                    VEX2_VECTOR const &place = {});

// The parts as one mesh on the scene's nodes.
void add_skinned_mesh(VEX2 &scene, std::u16string_view name, std::vector<PART> const &parts);

using SECONDS_AND_DEGREES = std::initializer_list<std::pair<float, float>>;
void key_rotation(VEX2 &scene, unsigned node, VEX2_VECTOR const &axis, SECONDS_AND_DEGREES keys);
void key_translation(VEX2 &scene, unsigned node, std::initializer_list<std::pair<float, VEX2_VECTOR>> keys);

}  // namespace EXAMPLES
