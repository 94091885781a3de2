// A man and a horse walk up to each other, and a camera looks on: nodes only, each actor's below a node of its own,
// with the actor's namespace in front of their names. The namespace is also the name of the actor's skeleton.

#include "examples/horse.h"
#include "examples/man.h"
#include "examples/scenes.h"
#include "scene/scene.h"

namespace EXAMPLES {

bool write_meeting(KN::String const &path)
{
    VEX2 scene;
    scene.header.source_text = u"meeting";
    scene.info.end_time = 3;
    scene.hierarchy.add_node(u"scene", -1, {0, 0, 0});
    unsigned const man_top = scene.hierarchy.add_node(u"CH:man:top", 0, {0, 0, -3});
    unsigned const man = add_joints(scene, MAN::joints(), u"CH:man:", int(man_top));
    unsigned const horse_top = scene.hierarchy.add_node(u"CH:horse:top", 0, {0, 0, 3}, rotation_about({0, 1, 0}, 180));
    unsigned const horse = add_joints(scene, HORSE::joints(), u"CH:horse:", int(horse_top));
    unsigned const camera = scene.hierarchy.add_node(u"CAM:view", 0, {5, 1.7f, 0}, rotation_about({0, 1, 0}, 90));

    key_translation(scene, man_top, {{0, {0, 0, -3}}, {2, {0, 0, -0.9f}}, {3, {0, 0, -0.9f}}});
    key_translation(scene, horse_top, {{0, {0, 0, 3}}, {2, {0, 0, 1.2f}}, {3, {0, 0, 1.2f}}});
    key_translation(scene, camera, {{0, {5, 1.7f, 0}}, {3, {3.5f, 1.6f, 0}}});
    key_rotation(scene, man + MAN::UPPER_ARM_RIGHT, {1, 0, 0}, {{0, 0}, {2, 0}, {2.5f, -70}, {3, -70}});
    key_rotation(scene, horse + HORSE::NECK, {1, 0, 0}, {{0, 0}, {2, 0}, {2.6f, 20}, {3, 20}});
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
