// The tower stands on the origin, its door towards +z. It has no levels of detail of its own.

#include "examples/scene_kit.h"
#include "examples/scenes.h"
#include "scene/scene.h"

namespace EXAMPLES {

namespace {

constexpr unsigned sides = 48;
constexpr unsigned merlons = 12;  // each as wide as the gap beside it
constexpr float parapet_inside = 2.85f, parapet_outside = 3.2f, parapet_top = 13, merlon_top = 13.9f;
constexpr TEXTURE_FIT stone_fit = {2};
constexpr TEXTURE_FIT timber_fit = {1};

}  // namespace

static void add_shaft(SHAPE &stone)
{
    struct {
        float radius, height;
    } const profile[] = {{3.35f, 0},
                         {3.0f, 1.2f},
                         {2.75f, 7.9f},
                         {2.92f, 8},
                         {2.92f, 8.25f},
                         {2.75f, 8.35f},
                         {2.7f, 11},
                         {3.2f, 11.8f},
                         {parapet_outside, parapet_top},
                         {parapet_inside, parapet_top},
                         {parapet_inside, 12},
                         {0, 12}};
    std::vector<RING> rings;
    for (auto const &step : profile)
        rings.push_back({{0, step.height, 0}, step.radius, step.radius});
    stone.loft(rings, sides, EDGES::HARD, stone_fit);
}

static void add_battlements(SHAPE &stone)
{
    constexpr unsigned span = sides / (2 * merlons);  // of the shaft's sides, so that corners meet
    auto const at = [](unsigned side, float radius, float height) {
        float const angle = 2 * pi * float(side % sides) / float(sides);
        return VEX2_VECTOR{radius * std::cos(angle), height, -radius * std::sin(angle)};
    };
    for (unsigned merlon = 0; merlon < merlons; ++merlon) {
        unsigned const from = merlon * 2 * span, to = from + span;
        for (unsigned i = from; i < to; ++i) {
            VEX2_VECTOR const outer[] = {at(i, parapet_outside, parapet_top), at(i + 1, parapet_outside, parapet_top),
                                         at(i + 1, parapet_outside, merlon_top), at(i, parapet_outside, merlon_top)};
            VEX2_VECTOR const inner[] = {at(i + 1, parapet_inside, parapet_top), at(i, parapet_inside, parapet_top),
                                         at(i, parapet_inside, merlon_top), at(i + 1, parapet_inside, merlon_top)};
            stone.polygon(outer, stone_fit);
            stone.polygon(inner, stone_fit);
            stone.polygon({outer[3], outer[2], inner[3], inner[2]}, stone_fit);
        }
        auto const end = [&](unsigned side, float first, float second) {
            stone.polygon({at(side, first, parapet_top), at(side, second, parapet_top), at(side, second, merlon_top),
                           at(side, first, merlon_top)},
                          stone_fit);
        };
        end(from, parapet_inside, parapet_outside);
        end(to, parapet_outside, parapet_inside);
    }
}

// A slit in a frame of stone, made for a wall that looks along +z at the given distance from the axis.
static void add_slit(SHAPE &stone, SHAPE &dark, float degrees, float height, float radius)
{
    SHAPE frame, slit;
    for (float x : {-0.22f, 0.07f})
        frame.box({x, 0, -0.3f}, {x + 0.15f, 1.1f, 0.06f}, stone_fit);
    frame.box({-0.28f, -0.16f, -0.3f}, {0.28f, 0, 0.09f}, stone_fit);
    frame.box({-0.28f, 1.1f, -0.3f}, {0.28f, 1.24f, 0.09f}, stone_fit);
    slit.box({-0.07f, 0, -0.3f}, {0.07f, 1.1f, 0.015f}, stone_fit);
    VEX2_VECTOR const place = {radius * std::sin(degrees * pi / 180), height, radius * std::cos(degrees * pi / 180)};
    stone.append(frame, placed(degrees, place));
    dark.append(slit, placed(degrees, place));
}

static void add_door(SHAPE &stone, SHAPE &timber, SHAPE &iron)
{
    for (float x : {-1.0f, 0.65f})
        stone.box({x, 0, 2.4f}, {x + 0.35f, 2.3f, 3.55f}, stone_fit);
    stone.box({-1.1f, 2.3f, 2.4f}, {1.1f, 2.7f, 3.6f}, stone_fit);
    stone.box({-1.2f, 0, 3.4f}, {1.2f, 0.15f, 4.1f}, stone_fit);
    timber.box({-0.65f, 0, 2.4f}, {0.65f, 2.3f, 3.38f}, timber_fit);
    for (float y : {0.4f, 1.75f})
        iron.box({-0.65f, y, 3.38f}, {0.45f, y + 0.1f, 3.41f}, timber_fit);
    iron.box({0.42f, 1.05f, 3.38f}, {0.5f, 1.25f, 3.46f}, timber_fit);
}

// A pole in the middle of the platform and a flag that waves along +x.
static void add_flag(SHAPE &timber, SHAPE &cloth)
{
    RING const pole[] = {{{0, 12, 0}, 0.09f, 0.09f}, {{0, 18, 0}, 0.05f, 0.05f}, {{0, 18.1f, 0}, 0, 0}};
    timber.loft(pole, 8, EDGES::SMOOTH, timber_fit);
    constexpr unsigned columns = 16;
    for (unsigned column = 0; column <= columns; ++column) {
        float const part = float(column) / columns, x = 0.05f + 2.2f * part;
        float const z = 0.22f * part * std::sin(7 * part);
        float const slope = 0.22f * (std::sin(7 * part) + 7 * part * std::cos(7 * part)) / 2.2f;
        VEX2_VECTOR const normal = unit({-slope, 0, 1});
        for (float height : {16.7f, 17.9f})
            cloth.corners.push_back({{x, height - 0.25f * part, z}, normal, x / 2, height / 2});
    }
    for (std::uint32_t i = 0; i < 2 * columns; i += 2)
        cloth.indices.insert(cloth.indices.end(), {i, i + 2, i + 3, i, i + 3, i + 1});
}

bool write_tower(KN::String const &path)
{
    VEX2 scene;
    scene.header.source_text = u"tower";
    unsigned const root = scene.hierarchy.add_node(u"tower", -1, {});
    SHAPE stone, timber, iron, dark, flag;
    add_shaft(stone);
    add_battlements(stone);
    add_door(stone, timber, iron);
    add_flag(timber, flag);
    for (int turn = 0; turn < 8; ++turn) {
        bool const low = turn % 2 != 0;  // around the tower, alternately below and above the string course
        add_slit(stone, dark, 45.0f * float(turn), low ? 4.2f : 9.0f, low ? 2.89f : 2.73f);
    }

    int const stone_look =
        add_material(scene, {.name = u"stone", .picture = u"stone.tga", .normal_picture = u"stone_normal.tga"});
    int const timber_look = add_material(scene, {.name = u"timber", .picture = u"timber.tga"});
    int const iron_look = add_material(
        scene, {.name = u"iron", .red = 0.1f, .green = 0.1f, .blue = 0.1f, .roughness = 0.5f, .metalness = 1});
    int const dark_look = add_material(scene, {.name = u"dark", .red = 0.02f, .green = 0.02f, .blue = 0.03f});
    int const flag_look = add_material(
        scene,
        {.name = u"flag", .picture = u"cloth.tga", .red = 0.55f, .green = 0.03f, .blue = 0.03f, .two_sided = true});
    add_static_mesh(
        scene, u"tower", u"DISPLAY", root,
        {{stone_look, stone}, {timber_look, timber}, {iron_look, iron}, {dark_look, dark}, {flag_look, flag}});
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
