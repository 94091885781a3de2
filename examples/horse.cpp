// The horse nods and shifts its legs as in a walk, for two seconds. At time 0 it stands still.

#include "examples/horse.h"

#include "examples/scenes.h"
#include "scene/scene.h"

namespace EXAMPLES {

using namespace HORSE;

static constexpr JOINT all_joints[] = {
    {u"horse_root", -1, {0, 0, 0}},
    {u"pelvis", ROOT, {0, 1.35f, -0.55f}},
    {u"back", PELVIS, {0, 1.38f, 0.1f}},
    {u"neck", BACK, {0, 1.45f, 0.6f}},
    {u"head", NECK, {0, 2.0f, 0.95f}},
    {u"tail", PELVIS, {0, 1.45f, -0.8f}},
    {u"thigh_left", PELVIS, {0.17f, 1.15f, -0.6f}},
    {u"hind_left", THIGH_LEFT, {0.18f, 0.6f, -0.7f}},
    {u"thigh_right", PELVIS, {-0.17f, 1.15f, -0.6f}},
    {u"hind_right", THIGH_RIGHT, {-0.18f, 0.6f, -0.7f}},
    {u"shoulder_left", BACK, {0.16f, 1.1f, 0.5f}},
    {u"fore_left", SHOULDER_LEFT, {0.16f, 0.6f, 0.5f}},
    {u"shoulder_right", BACK, {-0.16f, 1.1f, 0.5f}},
    {u"fore_right", SHOULDER_RIGHT, {-0.16f, 0.6f, 0.5f}},
};

std::span<JOINT const> HORSE::joints() { return all_joints; }

enum MATERIAL { COAT, MANE, HOOF };

static void add_leg(std::vector<PART> &parts, unsigned upper, unsigned lower)
{
    VEX2_VECTOR const top = all_joints[upper].place, knee = all_joints[lower].place;
    parts.push_back({COAT,
                     lofted({{{knee.x, 0.1f, knee.z + 0.02f}, 0.055f, 0.06f},
                             {{knee.x, 0.35f, knee.z}, 0.045f, 0.05f},
                             {{knee.x, 0.6f, knee.z}, 0.065f, 0.075f},
                             {{top.x, 0.85f, (top.z + knee.z) / 2}, 0.085f, 0.11f},
                             {{top.x, 1.15f, top.z}, 0.12f, 0.19f},
                             {{top.x * 0.8f, 1.35f, top.z}, 0.06f, 0.1f}},
                            14),
                     {upper, lower, 0.6f, 0.08f}});
    parts.push_back({HOOF,
                     lofted({{{knee.x, 0, knee.z + 0.04f}, 0, 0},
                             {{knee.x, 0, knee.z + 0.04f}, 0.075f, 0.085f},
                             {{knee.x, 0.1f, knee.z + 0.02f}, 0.055f, 0.062f},
                             {{knee.x, 0.1f, knee.z + 0.02f}, 0, 0}},
                            14, EDGES::HARD),
                     stiff(lower)});
}

static std::vector<PART> horse_parts()
{
    std::vector<PART> parts;
    parts.push_back({COAT, ball({0, 1.3f, -0.45f}, {0.29f, 0.3f, 0.45f}, 20), stiff(PELVIS)});
    parts.push_back({COAT, ball({0, 1.27f, 0.2f}, {0.29f, 0.32f, 0.6f}, 20), stiff(BACK)});
    // Neck and head, lofted upright and tipped forwards.
    SHAPE neck;
    neck.append(lofted({{{0, -0.1f, 0}, 0.16f, 0.24f},
                        {{0, 0.3f, 0}, 0.12f, 0.17f},
                        {{0, 0.72f, 0}, 0.085f, 0.11f},
                        {{0, 0.8f, 0}, 0, 0}},
                       16),
                tipped(32, {0, 1.4f, 0.55f}));
    parts.push_back({COAT, neck, stiff(NECK)});
    SHAPE mane;
    mane.append(lofted({{{0, 0, -0.16f}, 0.02f, 0.06f},
                        {{0, 0.4f, -0.14f}, 0.025f, 0.08f},
                        {{0, 0.78f, -0.06f}, 0.02f, 0.07f},
                        {{0, 0.84f, 0}, 0, 0}},
                       10),
                tipped(32, {0, 1.4f, 0.55f}));
    parts.push_back({MANE, mane, stiff(NECK)});
    SHAPE head;
    head.append(lofted({{{0, -0.1f, 0}, 0.08f, 0.09f},
                        {{0, 0.05f, 0}, 0.1f, 0.12f},
                        {{0, 0.3f, 0}, 0.07f, 0.085f},
                        {{0, 0.5f, 0}, 0.06f, 0.07f},
                        {{0, 0.56f, 0}, 0, 0}},
                       14),
                tipped(125, {0, 2.05f, 0.95f}));
    for (float const side : {-1.0f, 1.0f})
        head.append(lofted({{{side * 0.06f, 2.08f, 0.92f}, 0.03f, 0.02f}, {{side * 0.065f, 2.22f, 0.92f}, 0, 0}}, 8));
    parts.push_back({COAT, head, stiff(HEAD)});
    SHAPE tail;
    tail.append(lofted({{{0, 0, 0}, 0.03f, 0.03f},
                        {{0, 0.3f, 0}, 0.07f, 0.06f},
                        {{0, 0.8f, 0}, 0.02f, 0.02f},
                        {{0, 0.85f, 0}, 0, 0}},
                       10),
                tipped(190, {0, 1.5f, -0.85f}));
    parts.push_back({MANE, tail, stiff(TAIL)});
    add_leg(parts, THIGH_LEFT, HIND_LEFT);
    add_leg(parts, THIGH_RIGHT, HIND_RIGHT);
    add_leg(parts, SHOULDER_LEFT, FORE_LEFT);
    add_leg(parts, SHOULDER_RIGHT, FORE_RIGHT);
    return parts;
}

bool write_horse(KN::String const &path)
{
    VEX2 scene;
    scene.header.source_text = u"horse";
    scene.info.end_time = 2;
    add_joints(scene, joints());
    VEX2_VECTOR const across{1, 0, 0};
    key_rotation(scene, NECK, across, {{0, 0}, {0.5f, 12}, {1, 0}, {1.5f, 12}, {2, 0}});
    key_rotation(scene, TAIL, {0, 0, 1}, {{0, 0}, {0.5f, 14}, {1.5f, -14}, {2, 0}});
    key_rotation(scene, THIGH_LEFT, across, {{0, 0}, {0.5f, -16}, {1.5f, 14}, {2, 0}});
    key_rotation(scene, THIGH_RIGHT, across, {{0, 0}, {0.5f, 14}, {1.5f, -16}, {2, 0}});
    key_rotation(scene, SHOULDER_LEFT, across, {{0, 0}, {0.5f, 16}, {1.5f, -18}, {2, 0}});
    key_rotation(scene, SHOULDER_RIGHT, across, {{0, 0}, {0.5f, -18}, {1.5f, 16}, {2, 0}});

    add_material(scene, {.name = u"coat", .red = 0.16f, .green = 0.07f, .blue = 0.03f, .roughness = 0.6f});
    add_material(scene, {.name = u"mane", .red = 0.02f, .green = 0.015f, .blue = 0.012f});
    add_material(scene, {.name = u"hoof", .red = 0.05f, .green = 0.045f, .blue = 0.04f, .roughness = 0.5f});
    add_skinned_mesh(scene, u"horse", horse_parts());
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
