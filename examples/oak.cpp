// The oak: a trunk that parts into boughs, and at their ends and along them leaves on crossed cards.

#include "examples/scene_kit.h"
#include "examples/scenes.h"
#include "scene/scene.h"

#include <array>

namespace EXAMPLES {

namespace {

constexpr TEXTURE_FIT bark_fit = {1};
constexpr unsigned boughs = 9;
constexpr float golden_angle = 2.39996323f;  // a turn after which no two boughs stand above each other

// A tapering limb with a bend in the middle.
struct LIMB {
    VEX2_VECTOR from, middle, to;
    float thick, thin;  // radii
};

}  // namespace

static VEX2_VECTOR between(VEX2_VECTOR const &a, VEX2_VECTOR const &b, float t) { return a * (1 - t) + b * t; }

static VEX2_VECTOR point_on(LIMB const &limb, float t)
{
    return between(between(limb.from, limb.middle, t), between(limb.middle, limb.to, t), t);
}

static void add_limb(SHAPE &bark, LIMB const &limb, unsigned sides)
{
    std::vector<RING> rings;
    constexpr int steps = 6;
    for (int i = 0; i <= steps; ++i) {
        float const t = float(i) / steps, radius = limb.thick + (limb.thin - limb.thick) * t;
        rings.push_back({point_on(limb, t), radius, radius});
    }
    rings.push_back({limb.to, 0, 0});
    bark.loft(rings, sides, EDGES::SMOOTH, bark_fit);
}

// A square of leaves seen from both sides. Its normals point out of the crown, so that the cards shade like one body.
static void add_card(SHAPE &leaves, VEX2_VECTOR const &middle, VEX2_VECTOR const &right, VEX2_VECTOR const &up,
                     VEX2_VECTOR const &crown)
{
    auto const first = std::uint32_t(leaves.corners.size());
    VEX2_VECTOR const normal = unit(middle - crown);
    for (auto const &[u, v] : std::array<std::array<float, 2>, 4>{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}})
        leaves.corners.push_back({middle + right * (u - 0.5f) + up * (v - 0.5f), normal, u, v});
    for (std::uint32_t const corner : {0u, 1u, 2u, 0u, 2u, 3u})
        leaves.indices.push_back(first + corner);
}

static void add_tuft(SHAPE &leaves, VEX2_VECTOR const &middle, float size, float angle, VEX2_VECTOR const &crown)
{
    VEX2_VECTOR const right{std::cos(angle) * size, 0, std::sin(angle) * size};
    VEX2_VECTOR const ahead{-right.z, 0, right.x}, up{0, size, 0};
    add_card(leaves, middle, right, up, crown);
    add_card(leaves, middle, ahead, up, crown);
    add_card(leaves, middle, right, ahead, crown);
}

bool write_oak(KN::String const &path)
{
    SHAPE bark, leaves;
    LIMB const trunk = {{0, 0, 0}, {0.15f, 2, 0.1f}, {0, 6.5f, 0}, 0.42f, 0.12f};
    VEX2_VECTOR const crown{0, 5.2f, 0};
    add_limb(bark, trunk, 16);
    bark.loft(std::array<RING, 2>{{{{0, 0, 0}, 0.62f, 0.58f}, {{0.04f, 0.6f, 0.03f}, 0.38f, 0.38f}}}, 16, EDGES::SMOOTH,
              bark_fit);
    add_tuft(leaves, {0, 7.6f, 0}, 2.6f, 0.4f, crown);
    for (unsigned i = 0; i < boughs; ++i) {
        float const angle = golden_angle * float(i), share = float(i) / (boughs - 1);
        float const reach = 3.3f - 1.3f * share, rise = 1.2f + 1.1f * share;
        VEX2_VECTOR const from = point_on(trunk, 0.42f + 0.5f * share);
        VEX2_VECTOR const to = from + VEX2_VECTOR{reach * std::cos(angle), rise, reach * std::sin(angle)};
        LIMB const bough = {from, between(from, to, 0.5f) + VEX2_VECTOR{0, -0.35f, 0}, to, 0.17f - 0.07f * share,
                            0.03f};
        add_limb(bark, bough, 10);
        for (float const along : {0.5f, 0.75f, 1.0f})
            add_tuft(leaves, point_on(bough, along) + VEX2_VECTOR{0, 0.25f, 0}, 1.3f + 0.9f * along, angle + 2 * along,
                     crown);
    }

    VEX2 scene;
    scene.header.source_text = u"oak";
    scene.hierarchy.add_node(u"oak", -1, {0, 0, 0});
    int const bark_look = add_material(scene, {.name = u"bark", .picture = u"bark_diffuse.tga"});
    int const leaf_look = add_material(
        scene,
        {.name = u"leaves", .picture = u"leaves_diffuse.tga", .roughness = 0.8f, .two_sided = true, .cut_out = true});
    add_static_mesh(scene, u"oak", u"DISPLAY", 0, {{bark_look, bark}, {leaf_look, leaves}});
    return save_scene(scene, path);
}

}  // namespace EXAMPLES
