// The villager looks along +z and stands with hanging arms at time 0; then the right arm waves for two seconds.

#include "examples/man.h"
#include "examples/scenes.h"
#include "scene/scene.h"

namespace EXAMPLES {

using namespace MAN;

bool write_villager(KN::String const &path)
{
    VEX2 scene;
    scene.header.source_text = u"villager";
    scene.info.end_time = 2;
    add_joints(scene, joints());
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

    add_skinned_mesh(scene, u"villager", parts(HAT::STRAW));
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
