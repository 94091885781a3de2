// The villager looks along +z and stands with hanging arms at time 0; then the right arm waves for two seconds. Each
// part of the body is a loft whose corners follow one bone, or two around the joint between them.

#include "examples/scene_kit.h"
#include "examples/scenes.h"
#include "scene/scene.h"

#include <utility>

namespace EXAMPLES {

using namespace VEX2_LOADER;

namespace {

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

struct JOINT {
    std::u16string_view name;
    int parent;
    VEX2_VECTOR place;  // in the scene
};

constexpr JOINT joints[] = {
    {u"root", -1, {0, 0, 0}},
    {u"hips", ROOT, {0, 0.95f, 0}},
    {u"spine", HIPS, {0, 1.08f, 0}},
    {u"chest", SPINE, {0, 1.25f, 0}},
    {u"neck", CHEST, {0, 1.47f, 0}},
    {u"head", NECK, {0, 1.55f, 0.01f}},
    {u"upper_arm_left", CHEST, {0.19f, 1.41f, 0}},
    {u"lower_arm_left", UPPER_ARM_LEFT, {0.29f, 1.14f, 0}},
    {u"hand_left", LOWER_ARM_LEFT, {0.36f, 0.9f, 0.03f}},
    {u"upper_arm_right", CHEST, {-0.19f, 1.41f, 0}},
    {u"lower_arm_right", UPPER_ARM_RIGHT, {-0.29f, 1.14f, 0}},
    {u"hand_right", LOWER_ARM_RIGHT, {-0.36f, 0.9f, 0.03f}},
    {u"thigh_left", HIPS, {0.1f, 0.92f, 0}},
    {u"shin_left", THIGH_LEFT, {0.11f, 0.5f, 0.01f}},
    {u"foot_left", SHIN_LEFT, {0.12f, 0.09f, -0.02f}},
    {u"thigh_right", HIPS, {-0.1f, 0.92f, 0}},
    {u"shin_right", THIGH_RIGHT, {-0.11f, 0.5f, 0.01f}},
    {u"foot_right", SHIN_RIGHT, {-0.12f, 0.09f, -0.02f}},
};

// Which bones move a corner: `upper` alone above the joint, `lower` alone below it.
struct BEND {
    unsigned upper, lower;
    float height, reach;  // of the joint, and how far the transition goes up and down from it
};

struct PART {
    int material;
    SHAPE shape;
    BEND bend;
};

constexpr TEXTURE_FIT cloth_fit = {0.25f};

// The looks, in the order in which they become the scene's materials.
enum MATERIAL { SKIN, TUNIC, TROUSERS, LEATHER, STRAW, EYES };

}  // namespace

static BEND stiff(unsigned bone) { return {bone, bone, 0, 1}; }

static SHAPE lofted(std::initializer_list<RING> rings, unsigned sides, EDGES edges = EDGES::SMOOTH)
{
    SHAPE made;
    made.loft(std::span(rings.begin(), rings.size()), sides, edges, cloth_fit);
    return made;
}

static SHAPE ball(VEX2_VECTOR const &middle, VEX2_VECTOR const &radii, unsigned sides)
{
    std::vector<RING> rings;
    unsigned const rows = sides / 2;
    for (unsigned i = 0; i <= rows; ++i) {
        float const angle = pi * (float(i) / float(rows) - 0.5f);
        float const wide = i == 0 || i == rows ? 0 : std::cos(angle);
        rings.push_back({{middle.x, middle.y + radii.y * std::sin(angle), middle.z}, radii.x * wide, radii.z * wide});
    }
    SHAPE made;
    made.loft(rings, sides, EDGES::SMOOTH, cloth_fit);
    return made;
}

static void add_trunk(std::vector<PART> &parts)
{
    parts.push_back({TUNIC,
                     lofted({{{0, 0.70f, 0}, 0.215f, 0.17f},
                             {{0, 0.84f, 0}, 0.2f, 0.155f},
                             {{0, 0.97f, 0}, 0.16f, 0.12f},
                             {{0, 1.05f, 0}, 0.155f, 0.115f},
                             {{0, 1.16f, 0}, 0.17f, 0.12f},
                             {{0, 1.28f, 0}, 0.195f, 0.125f},
                             {{0, 1.38f, 0}, 0.205f, 0.115f},
                             {{0, 1.44f, 0}, 0.17f, 0.10f},
                             {{0, 1.48f, 0}, 0.08f, 0.075f},
                             {{0, 1.49f, 0}, 0.055f, 0.055f}},
                            24),
                     {CHEST, HIPS, 1.1f, 0.12f}});
    parts.push_back({LEATHER,
                     lofted({{{0, 0.96f, 0}, 0.16f, 0.12f},
                             {{0, 0.965f, 0}, 0.172f, 0.132f},
                             {{0, 1.005f, 0}, 0.17f, 0.13f},
                             {{0, 1.01f, 0}, 0.155f, 0.115f}},
                            24),
                     stiff(HIPS)});
    SHAPE buckle;
    buckle.box({-0.03f, 0.96f, 0.125f}, {0.03f, 1.01f, 0.142f}, cloth_fit);
    parts.push_back({STRAW, buckle, stiff(HIPS)});
}

static void add_head(std::vector<PART> &parts)
{
    parts.push_back({SKIN,
                     lofted({{{0, 1.45f, 0}, 0.058f, 0.058f}, {{0, 1.58f, 0.01f}, 0.055f, 0.058f}}, 16),
                     {HEAD, NECK, 1.53f, 0.04f}});
    SHAPE face = ball({0, 1.665f, 0.015f}, {0.085f, 0.12f, 0.1f}, 20);
    face.append(ball({0, 1.65f, 0.117f}, {0.016f, 0.022f, 0.022f}, 8));
    for (float side : {-1.0f, 1.0f})
        face.append(ball({side * 0.086f, 1.66f, 0.005f}, {0.012f, 0.028f, 0.018f}, 8));
    parts.push_back({SKIN, face, stiff(HEAD)});
    SHAPE eyes;
    for (float side : {-1.0f, 1.0f})
        eyes.append(ball({side * 0.033f, 1.685f, 0.103f}, {0.011f, 0.013f, 0.009f}, 8));
    parts.push_back({EYES, eyes, stiff(HEAD)});
    // Hair below a straw hat with a wide brim.
    parts.push_back({LEATHER, ball({0, 1.675f, -0.012f}, {0.094f, 0.118f, 0.1f}, 16), stiff(HEAD)});
    parts.push_back({STRAW,
                     lofted({{{0, 1.725f, 0.01f}, 0, 0},
                             {{0, 1.725f, 0.01f}, 0.2f, 0.21f},
                             {{0, 1.74f, 0.01f}, 0.2f, 0.21f},
                             {{0, 1.755f, 0.01f}, 0.105f, 0.115f},
                             {{0, 1.83f, 0.01f}, 0.09f, 0.1f},
                             {{0, 1.845f, 0.01f}, 0.07f, 0.08f},
                             {{0, 1.85f, 0.01f}, 0, 0}},
                            24, EDGES::HARD),
                     stiff(HEAD)});
}

static void add_limbs(std::vector<PART> &parts, float side, unsigned upper_arm, unsigned thigh)
{
    unsigned const lower_arm = upper_arm + 1, hand = upper_arm + 2, shin = thigh + 1, foot = thigh + 2;
    auto const at = [&](float x, float y, float z) { return VEX2_VECTOR{side * x, y, z}; };

    parts.push_back({TUNIC,
                     lofted({{at(0.345f, 0.93f, 0.02f), 0, 0},
                             {at(0.345f, 0.93f, 0.02f), 0.052f, 0.052f},
                             {at(0.32f, 1.02f, 0.01f), 0.05f, 0.05f},
                             {at(0.29f, 1.14f, 0), 0.052f, 0.055f},
                             {at(0.25f, 1.26f, 0), 0.06f, 0.062f},
                             {at(0.21f, 1.37f, 0), 0.07f, 0.07f},
                             {at(0.17f, 1.43f, 0), 0.055f, 0.055f},
                             {at(0.15f, 1.45f, 0), 0, 0}},
                            14),
                     {upper_arm, lower_arm, 1.14f, 0.06f}});
    SHAPE fist = ball(at(0.368f, 0.855f, 0.032f), {0.03f, 0.065f, 0.042f}, 12);
    fist.append(ball(at(0.352f, 0.865f, 0.068f), {0.014f, 0.035f, 0.016f}, 8));
    parts.push_back({SKIN, fist, stiff(hand)});

    parts.push_back({TROUSERS,
                     lofted({{at(0.12f, 0.22f, 0), 0.06f, 0.065f},
                             {at(0.115f, 0.36f, 0), 0.066f, 0.072f},
                             {at(0.11f, 0.5f, 0.01f), 0.068f, 0.072f},
                             {at(0.105f, 0.66f, 0), 0.08f, 0.085f},
                             {at(0.095f, 0.84f, 0), 0.082f, 0.095f},
                             {at(0.08f, 0.95f, 0), 0.06f, 0.075f}},
                            14),
                     {thigh, shin, 0.5f, 0.07f}});
    parts.push_back({LEATHER,
                     lofted({{at(0.12f, 0, -0.02f), 0, 0},
                             {at(0.12f, 0, -0.02f), 0.05f, 0.06f},
                             {at(0.12f, 0.1f, -0.02f), 0.052f, 0.06f},
                             {at(0.12f, 0.3f, 0), 0.072f, 0.078f},
                             {at(0.12f, 0.31f, 0), 0.06f, 0.065f}},
                            14, EDGES::HARD),
                     {shin, foot, 0.09f, 0.03f}});
    // The foot, lofted upright and tipped forward.
    SHAPE boot;
    boot.append(lofted({{{0, 0, 0}, 0.046f, 0.045f},
                        {{0, 0.1f, 0.004f}, 0.05f, 0.04f},
                        {{0, 0.17f, 0.012f}, 0.046f, 0.03f},
                        {{0, 0.21f, 0.018f}, 0.03f, 0.02f},
                        {{0, 0.22f, 0.02f}, 0, 0}},
                       14),
                tipped(90, at(0.12f, 0.045f, 0)));
    parts.push_back({LEATHER, boot, stiff(foot)});
}

static void add_influence(VEX2_WEIGHTED_VERTEX &vertex, unsigned bone, float weight)
{
    if (weight == 0)
        return;
    VEX2_INFLUENCE &influence = vertex.influences.append();
    influence.matrix_index = bone;
    influence.weight = weight;
}

static VEX2_WEIGHTED_MESH *skinned(std::vector<PART> const &parts)
{
    auto *const mesh = new VEX2_WEIGHTED_MESH;
    mesh->name = u"villager";
    mesh->attributes.add_string(u"class_TYPE", u"DISPLAY");
    std::vector<SURFACE> surfaces;
    for (PART const &part : parts) {
        surfaces.push_back({part.material, part.shape});
        for (CORNER const &corner : part.shape.corners) {
            VEX2_WEIGHTED_VERTEX &vertex = mesh->vertices.append();
            set_vertex(vertex, corner);
            vertex.bind_position = corner.position;
            vertex.bind_normal = corner.normal;
            BEND const &bend = part.bend;
            float const upper = bend.upper == bend.lower ? 1
                                                         : smooth_step(bend.height - bend.reach,
                                                                       bend.height + bend.reach, corner.position.y);
            add_influence(vertex, bend.upper, upper);
            add_influence(vertex, bend.lower, 1 - upper);
        }
    }
    add_sections(*mesh, surfaces);
    return mesh;
}

static void key_rotation(VEX2 &scene, BONE bone, VEX2_VECTOR const &axis,
                         std::initializer_list<std::pair<float, float>> seconds_and_degrees)
{
    auto *const channel = new VEX2_SLERP_ROTATION_CHANNEL;
    for (auto const &[seconds, degrees] : seconds_and_degrees)
        append_key(*channel, seconds, rotation_about(axis, degrees));
    scene.hierarchy.nodes[bone].rotation = channel;
}

bool write_villager(KN::String const &path)
{
    VEX2 scene;
    scene.header.source_text = u"villager";
    scene.info.end_time = 2;
    for (JOINT const &joint : joints)
        scene.hierarchy.add_node(joint.name, joint.parent,
                                 joint.parent < 0 ? joint.place : joint.place - joints[joint.parent].place);
    key_rotation(scene, UPPER_ARM_RIGHT, {0, 0, 1}, {{0, 0}, {0.5f, -115}, {1.5f, -115}, {2, 0}});
    key_rotation(scene, LOWER_ARM_RIGHT, {0, 0, 1},
                 {{0, 0}, {0.5f, -30}, {0.75f, -5}, {1, -45}, {1.25f, -5}, {1.5f, -30}, {2, 0}});
    key_rotation(scene, HEAD, {0, 1, 0}, {{0, 0}, {0.5f, -12}, {1.5f, -12}, {2, 0}});
    key_rotation(scene, SPINE, {0, 0, 1}, {{0, 0}, {0.5f, 4}, {1.5f, 4}, {2, 0}});

    add_material(scene, {.name = u"skin", .red = 0.68f, .green = 0.40f, .blue = 0.27f, .roughness = 0.7f});
    add_material(scene, {.name = u"tunic", .picture = u"cloth.tga", .red = 0.12f, .green = 0.30f, .blue = 0.16f});
    add_material(scene, {.name = u"trousers", .picture = u"cloth.tga", .red = 0.25f, .green = 0.17f, .blue = 0.10f});
    add_material(scene, {.name = u"leather", .red = 0.09f, .green = 0.045f, .blue = 0.02f, .roughness = 0.6f});
    add_material(scene, {.name = u"straw", .picture = u"cloth.tga", .red = 0.75f, .green = 0.55f, .blue = 0.22f});
    add_material(scene, {.name = u"eyes", .red = 0.01f, .green = 0.01f, .blue = 0.01f, .roughness = 0.2f});

    std::vector<PART> parts;
    add_trunk(parts);
    add_head(parts);
    add_limbs(parts, 1, UPPER_ARM_LEFT, THIGH_LEFT);
    add_limbs(parts, -1, UPPER_ARM_RIGHT, THIGH_RIGHT);
    scene.weighted_meshes.append(skinned(parts));
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
