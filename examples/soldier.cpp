// The soldier marches in place for two seconds, two steps a second: legs and arms swing against each other, and the
// body goes up and down twice as often. At time 0 he stands still.

#include "examples/man.h"
#include "examples/scenes.h"
#include "scene/scene.h"

namespace EXAMPLES {

using namespace MAN;

// A swing forwards and one backwards a second, from rest to rest.
static void swing(VEX2 &scene, unsigned node, float forwards, float backwards)
{
    key_rotation(scene, node, {1, 0, 0},
                 {{0, 0}, {0.25f, forwards}, {0.75f, backwards}, {1.25f, forwards}, {1.75f, backwards}, {2, 0}});
}

bool write_soldier(KN::String const &path)
{
    VEX2 scene;
    scene.header.source_text = u"soldier";
    scene.info.end_time = 2;
    add_joints(scene, joints());
    swing(scene, THIGH_LEFT, -35, 20);
    swing(scene, THIGH_RIGHT, 20, -35);
    swing(scene, SHIN_LEFT, 30, 5);
    swing(scene, SHIN_RIGHT, 5, 30);
    swing(scene, UPPER_ARM_LEFT, 22, -22);
    swing(scene, UPPER_ARM_RIGHT, -22, 22);
    VEX2_VECTOR const up{0, 0.95f, 0}, down{0, 0.93f, 0};
    key_translation(scene, HIPS,
                    {{0, up},
                     {0.25f, down},
                     {0.5f, up},
                     {0.75f, down},
                     {1, up},
                     {1.25f, down},
                     {1.5f, up},
                     {1.75f, down},
                     {2, up}});

    add_material(scene, {.name = u"skin", .red = 0.62f, .green = 0.36f, .blue = 0.24f, .roughness = 0.7f});
    add_material(scene, {.name = u"tunic", .picture = u"cloth.tga", .red = 0.45f, .green = 0.05f, .blue = 0.04f});
    add_material(scene, {.name = u"trousers", .picture = u"cloth.tga", .red = 0.10f, .green = 0.10f, .blue = 0.12f});
    add_material(scene, {.name = u"leather", .red = 0.07f, .green = 0.035f, .blue = 0.018f, .roughness = 0.6f});
    add_material(scene,
                 {.name = u"iron", .red = 0.5f, .green = 0.5f, .blue = 0.52f, .roughness = 0.35f, .metalness = 1});
    add_material(scene, {.name = u"eyes", .red = 0.01f, .green = 0.01f, .blue = 0.01f, .roughness = 0.2f});
    add_skinned_mesh(scene, u"soldier", parts(HAT::HELMET));
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
