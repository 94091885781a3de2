// A fence of posts and rails around the hut, with a gap for the path to its door, and a woodpile.

#include "examples/scene_kit.h"
#include "examples/scenes.h"
#include "scene/scene.h"

namespace EXAMPLES {

namespace {

constexpr float half_side = 6, post_distance = 2, gate_half_width = 1;
constexpr TEXTURE_FIT upright = {0.6f};
constexpr TEXTURE_FIT along_x = {0.6f, {1, 0, 0}};

}  // namespace

// One side of the fence along x from `from` to `to`, posts at both ends.
static SHAPE fence(float from, float to)
{
    SHAPE made;
    int const gaps = int(std::lround((to - from) / post_distance));
    for (int i = 0; i <= gaps; ++i) {
        float const x = from + (to - from) * float(i) / float(gaps);
        made.box({x - 0.07f, 0, -0.07f}, {x + 0.07f, 1.1f, 0.07f}, upright);
        VEX2_VECTOR const top[] = {{x - 0.07f, 1.1f, 0.07f}, {x + 0.07f, 1.1f, 0.07f}, {x, 1.2f, 0.07f}};
        made.extrude(top, {0, 0, -0.14f}, upright);
    }
    for (float y : {0.35f, 0.8f})
        made.box({from, y, -0.03f}, {to, y + 0.12f, 0.03f}, along_x);
    return made;
}

static SHAPE woodpile()
{
    SHAPE log, pile;
    RING const rings[] = {{{0, 0, 0}, 0, 0}, {{0, 0, 0}, 0.12f, 0.12f}, {{0, 1, 0}, 0.11f, 0.11f}, {{0, 1, 0}, 0, 0}};
    log.loft(rings, 10, EDGES::HARD, {0.4f});
    for (int row = 0; row < 4; ++row)
        for (int i = 0; i < 7 - row; ++i) {
            float const along = 0.24f * (float(i) + 0.5f * float(row)), height = 0.12f + 0.21f * float(row);
            float const uneven = 0.06f * float((i * 5 + row * 3) % 4);
            pile.append(log, tipped(90, {along, height, uneven}));
        }
    return pile;
}

bool write_yard(KN::String const &path)
{
    using namespace VEX2_LOADER;
    VEX2 scene;
    scene.header.source_text = u"yard";
    unsigned const root = scene.hierarchy.add_node(u"yard", -1, {});

    SHAPE timber;
    timber.append(fence(-half_side, -gate_half_width), placed(0, {0, 0, half_side}));
    timber.append(fence(gate_half_width, half_side), placed(0, {0, 0, half_side}));
    for (float degrees : {90.0f, 180.0f, 270.0f})
        timber.append(fence(-half_side, half_side), placed(degrees, {half_side * std::sin(degrees * pi / 180), 0,
                                                                     half_side * std::cos(degrees * pi / 180)}));
    timber.append(woodpile(), placed(90, {3.2f, 0, 1.2f}));

    int const timber_look = add_material(scene, {.name = u"timber", .picture = u"timber.tga"});
    add_static_mesh(scene, u"yard_fence", u"DISPLAY", root, {{timber_look, timber}});

    SHAPE sides;
    for (float x : {-half_side, half_side})
        sides.box({x - 0.1f, 0, -half_side}, {x + 0.1f, 1.2f, half_side}, {});
    add_static_mesh(scene, u"collision_sides", u"TECH", root, {{-1, sides}});

    auto *const hut = new VEX2_SCENE_REFERENCE;
    hut->path = u"hut.vx2";
    scene.references_a.append(hut);
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
