// The hut stands on 4 x 5 metres with its door towards +z; its ridge runs along z.

#include "examples/scene_kit.h"
#include "examples/scenes.h"
#include "scene/scene.h"

#include <array>

namespace EXAMPLES {

namespace {

constexpr float half_width = 2, half_depth = 2.5f;
constexpr float floor_height = 0.3f, wall_height = 2.2f, ridge_height = 4.2f;

constexpr TEXTURE_FIT plaster_fit = {3};
constexpr TEXTURE_FIT upright = {0.8f};
constexpr TEXTURE_FIT along_x = {0.8f, {1, 0, 0}};
constexpr TEXTURE_FIT along_z = {0.8f, {0, 0, 1}};
constexpr TEXTURE_FIT stone_fit = {1.2f};

// What the hut is made of; each level of detail has some of it.
struct PARTS {
    SHAPE plaster, thatch, timber, stone, dark, iron;
};

using QUAD = std::array<VEX2_VECTOR, 4>;  // counter-clockwise from the lower left, seen from outside

}  // namespace

// A wall with an opening, which has a lining `depth` inwards and is closed there by a panel.
static void wall_with_opening(SHAPE &wall, SHAPE &lining, SHAPE &panel, QUAD const &outline, QUAD const &opening,
                              float depth)
{
    VEX2_VECTOR const inwards = unit(cross(outline[3] - outline[0], outline[1] - outline[0])) * depth;
    QUAD back;
    for (unsigned i = 0; i < 4; ++i) {
        unsigned const next = (i + 1) % 4;
        wall.polygon({outline[i], outline[next], opening[next], opening[i]}, plaster_fit);
        lining.polygon({opening[i], opening[next], opening[next] + inwards, opening[i] + inwards}, upright);
        back[i] = opening[i] + inwards;
    }
    panel.polygon(back, upright);
}

// On the wall that looks along the direction `side` of x.
static QUAD on_side(float side, float reach, float low, float high)
{
    float const x = side * half_width, from = side * reach;
    return {{{x, low, from}, {x, low, -from}, {x, high, -from}, {x, high, from}}};
}

static void add_gable(SHAPE &plaster, float facing)
{
    float const z = facing * half_depth, x = facing * half_width;
    plaster.polygon({{0, ridge_height, z}, {-x, wall_height, z}, {x, wall_height, z}}, plaster_fit);
}

static void add_plain_walls(SHAPE &plaster)
{
    for (float side : {-1.0f, 1.0f}) {
        plaster.polygon(on_side(side, half_depth, floor_height, wall_height), plaster_fit);
        float const x = side * half_width, z = side * half_depth;
        plaster.polygon({{-x, floor_height, z}, {x, floor_height, z}, {x, wall_height, z}, {-x, wall_height, z}},
                        plaster_fit);
        add_gable(plaster, side);
    }
}

static void add_walls_with_openings(PARTS &parts)
{
    // Windows in the long walls: a dark panel far in, a timber frame around it.
    for (float side : {-1.0f, 1.0f}) {
        wall_with_opening(parts.plaster, parts.timber, parts.dark, on_side(side, half_depth, floor_height, wall_height),
                          on_side(side, 0.5f, 1.0f, 1.75f), 0.2f);
        float const x = side * half_width, out = x + side * 0.05f;
        float const low = std::fmin(x, out), high = std::fmax(x, out);
        parts.timber.box({low, 0.88f, -0.72f}, {high, 1.0f, 0.72f}, along_z);
        parts.timber.box({low, 1.75f, -0.62f}, {high, 1.87f, 0.62f}, along_z);
        for (float z : {-0.62f, 0.5f})
            parts.timber.box({low, 1.0f, z}, {high, 1.75f, z + 0.12f}, upright);
        // The cross bars, a little behind the wall.
        float const bar = side * (half_width - 0.1f);
        parts.timber.box({bar - 0.02f, 1.0f, -0.025f}, {bar + 0.02f, 1.75f, 0.025f}, upright);
        parts.timber.box({bar - 0.02f, 1.36f, -0.5f}, {bar + 0.02f, 1.41f, 0.5f}, along_z);
        add_gable(parts.plaster, side);
    }

    // The back wall, and the front wall with the door, framed and hung on two iron bands.
    parts.plaster.polygon({{half_width, floor_height, -half_depth},
                           {-half_width, floor_height, -half_depth},
                           {-half_width, wall_height, -half_depth},
                           {half_width, wall_height, -half_depth}},
                          plaster_fit);
    float const z = half_depth;
    QUAD const front = {{{-half_width, floor_height, z},
                         {half_width, floor_height, z},
                         {half_width, wall_height, z},
                         {-half_width, wall_height, z}}};
    QUAD const door = {{{-0.5f, floor_height, z}, {0.5f, floor_height, z}, {0.5f, 2.0f, z}, {-0.5f, 2.0f, z}}};
    wall_with_opening(parts.plaster, parts.timber, parts.timber, front, door, 0.14f);
    for (float x : {-0.64f, 0.5f})
        parts.timber.box({x, floor_height, z}, {x + 0.14f, 2.0f, z + 0.06f}, upright);
    parts.timber.box({-0.72f, 2.0f, z}, {0.72f, 2.16f, z + 0.08f}, along_x);
    for (float y : {0.65f, 1.6f})
        parts.iron.box({-0.5f, y, z - 0.15f}, {0.35f, y + 0.06f, z - 0.12f}, upright);
    parts.iron.box({0.36f, 1.08f, z - 0.15f}, {0.42f, 1.22f, z - 0.08f}, upright);
    parts.stone.box({-0.7f, 0, z}, {0.7f, 0.16f, z + 0.6f}, stone_fit);
}

static void add_frame(SHAPE &timber)
{
    constexpr float thick = 0.2f, proud = 0.05f;
    for (float x : {-half_width - proud, half_width + proud - thick})
        for (float z : {-half_depth - proud, half_depth + proud - thick})
            timber.box({x, floor_height, z}, {x + thick, wall_height, z + thick}, upright);
    for (float side : {-1.0f, 1.0f}) {
        float const z = side * half_depth;
        float const low = std::fmin(z, z + side * proud), high = std::fmax(z, z + side * proud);
        timber.box({-half_width - proud, wall_height - 0.02f, low}, {half_width + proud, wall_height + 0.16f, high},
                   along_x);
        timber.box({-0.08f, wall_height + 0.16f, low}, {0.08f, ridge_height - 0.1f, high}, upright);
    }
}

// Two slopes of thatch in courses, each a little proud of the one below; the slopes are `overhang` metres longer than
// the walls demand on every side.
static void add_roof(SHAPE &thatch, unsigned courses, float overhang, float thickness)
{
    float const depth = half_depth + overhang;
    float const pitch = (ridge_height - wall_height) / half_width;
    float const reach = half_width + overhang;
    for (float side : {-1.0f, 1.0f}) {
        // At `part` of the way from the ridge to the eaves, `lift` above the rafters.
        auto const at = [&](float part, float lift, float z) {
            VEX2_VECTOR const out = unit({side * pitch, 1, 0});
            VEX2_VECTOR const on_rafter = {side * reach * part, ridge_height - pitch * reach * part, z};
            return part == 0 ? VEX2_VECTOR{0, ridge_height + lift / out.y, z} : on_rafter + out * lift;
        };
        // z of the edge that comes first when the slope is seen from outside with the ridge up.
        float const first = side * depth, last = -first;
        TEXTURE_FIT const fit = {1.5f, {0, 1, 0}};
        for (unsigned course = 0; course < courses; ++course) {
            float const top = float(course) / float(courses), bottom = float(course + 1) / float(courses);
            float const thin = course == 0 ? thickness : thickness * 0.75f;
            float const under = course + 1 == courses ? 0 : thickness * 0.75f;
            thatch.polygon(
                {at(bottom, thickness, first), at(bottom, thickness, last), at(top, thin, last), at(top, thin, first)},
                fit);
            thatch.polygon({at(bottom, under, first), at(bottom, under, last), at(bottom, thickness, last),
                            at(bottom, thickness, first)},
                           fit);
            for (float z : {first, last}) {
                QUAD end = {{at(top, 0, z), at(bottom, 0, z), at(bottom, thickness, z), at(top, thin, z)}};
                if (z * side > 0 ? side < 0 : side > 0)
                    std::swap(end[1], end[3]);
                thatch.polygon(end, fit);
            }
        }
        thatch.polygon({at(0, 0, first), at(0, 0, last), at(1, 0, last), at(1, 0, first)}, fit);
    }
}

static void add_chimney(PARTS &parts, bool detailed)
{
    parts.stone.box({0.6f, 2.6f, -1.7f}, {1.2f, 4.9f, -1.1f}, stone_fit);
    if (!detailed)
        return;
    parts.stone.box({0.52f, 4.9f, -1.78f}, {1.28f, 5.05f, -1.02f}, stone_fit);
    RING const pot[] = {{{0.9f, 5.05f, -1.4f}, 0.17f, 0.17f},
                        {{0.9f, 5.4f, -1.4f}, 0.13f, 0.13f},
                        {{0.9f, 5.4f, -1.4f}, 0.10f, 0.10f},
                        {{0.9f, 5.2f, -1.4f}, 0.10f, 0.10f},
                        {{0.9f, 5.2f, -1.4f}, 0, 0}};
    parts.dark.loft(pot, 12, EDGES::HARD, {0.5f});
}

static void add_plinth(SHAPE &stone)
{
    constexpr float proud = 0.1f;
    stone.box({-half_width - proud, 0, -half_depth - proud}, {half_width + proud, floor_height, half_depth + proud},
              stone_fit);
}

static PARTS nearest_level()
{
    PARTS parts;
    add_plinth(parts.stone);
    add_walls_with_openings(parts);
    add_frame(parts.timber);
    add_roof(parts.thatch, 6, 0.45f, 0.24f);
    // A roll of straw on the ridge, and bargeboards' worth of timber under it.
    RING const roll[] = {{{0, -half_depth - 0.5f, 0}, 0, 0},
                         {{0, -half_depth - 0.5f, 0}, 0.22f, 0.2f},
                         {{0, half_depth + 0.5f, 0}, 0.22f, 0.2f},
                         {{0, half_depth + 0.5f, 0}, 0, 0}};
    SHAPE ridge;
    ridge.loft(roll, 12, EDGES::HARD, {1.5f});
    parts.thatch.append(ridge, tipped(90, {0, ridge_height + 0.3f, 0}));
    add_chimney(parts, true);
    return parts;
}

static PARTS middle_level()
{
    PARTS parts;
    add_plinth(parts.stone);
    add_plain_walls(parts.plaster);
    add_roof(parts.thatch, 1, 0.45f, 0.24f);
    add_chimney(parts, false);
    float const z = half_depth + 0.02f, x = half_width + 0.02f;
    parts.timber.polygon({{-0.55f, floor_height, z}, {0.55f, floor_height, z}, {0.55f, 2.05f, z}, {-0.55f, 2.05f, z}},
                         upright);
    for (float side : {-x, x}) {
        float const from = side > 0 ? 0.5f : -0.5f;
        parts.dark.polygon({{side, 1, from}, {side, 1, -from}, {side, 1.75f, -from}, {side, 1.75f, from}}, upright);
    }
    return parts;
}

static PARTS farthest_level()
{
    PARTS parts;
    add_plain_walls(parts.plaster);
    add_plinth(parts.stone);
    add_roof(parts.thatch, 1, 0.45f, 0.24f);
    return parts;
}

bool write_hut(KN::String const &path)
{
    using namespace VEX2_LOADER;
    VEX2 scene;
    scene.header.source_text = u"hut";
    unsigned const root = scene.hierarchy.add_node(u"hut", -1, {});
    unsigned const display = scene.hierarchy.add_node(u"display", int(root), {});
    unsigned const tech = scene.hierarchy.add_node(u"tech", int(root), {});

    int const plaster = add_material(scene, {.name = u"plaster", .picture = u"plaster.tga"});
    int const thatch = add_material(scene, {.name = u"thatch", .picture = u"thatch.tga", .roughness = 1});
    int const timber = add_material(scene, {.name = u"timber", .picture = u"timber.tga"});
    int const stone =
        add_material(scene, {.name = u"stone", .picture = u"stone.tga", .normal_picture = u"stone_normal.tga"});
    int const dark = add_material(scene, {.name = u"dark", .red = 0.02f, .green = 0.02f, .blue = 0.03f});
    int const iron = add_material(
        scene, {.name = u"iron", .red = 0.1f, .green = 0.1f, .blue = 0.1f, .roughness = 0.5f, .metalness = 1});

    PARTS const levels[] = {nearest_level(), middle_level(), farthest_level()};
    char16_t const *const names[] = {u"hut_lod0", u"hut_lod1", u"hut_lod2"};
    for (unsigned level = 0; level < std::size(levels); ++level) {
        PARTS const &parts = levels[level];
        add_static_mesh(scene, names[level], u"DISPLAY", display,
                        {{plaster, parts.plaster},
                         {thatch, parts.thatch},
                         {timber, parts.timber},
                         {stone, parts.stone},
                         {dark, parts.dark},
                         {iron, parts.iron}});
    }

    SHAPE walls, roof;
    walls.box({-half_width, 0, -half_depth}, {half_width, wall_height, half_depth}, {});
    VEX2_VECTOR const gable[] = {
        {-half_width, wall_height, half_depth}, {half_width, wall_height, half_depth}, {0, ridge_height, half_depth}};
    roof.extrude(gable, {0, 0, -2 * half_depth}, {});
    add_static_mesh(scene, u"collision_walls", u"TECH", tech, {{-1, walls}});
    add_static_mesh(scene, u"collision_roof", u"TECH", tech, {{-1, roof}});
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
