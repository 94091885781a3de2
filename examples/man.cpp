#include "examples/man.h"

namespace EXAMPLES::MAN {

static constexpr TEXTURE_FIT cloth_fit = {0.25f};

static constexpr JOINT all_joints[] = {
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

std::span<JOINT const> joints() { return all_joints; }

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
    parts.push_back({HEADGEAR, buckle, stiff(HIPS)});
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
    parts.push_back({LEATHER, ball({0, 1.675f, -0.012f}, {0.094f, 0.118f, 0.1f}, 16), stiff(HEAD)});
}

// With a wide brim.
static SHAPE straw_hat()
{
    return lofted({{{0, 1.725f, 0.01f}, 0, 0},
                   {{0, 1.725f, 0.01f}, 0.2f, 0.21f},
                   {{0, 1.74f, 0.01f}, 0.2f, 0.21f},
                   {{0, 1.755f, 0.01f}, 0.105f, 0.115f},
                   {{0, 1.83f, 0.01f}, 0.09f, 0.1f},
                   {{0, 1.845f, 0.01f}, 0.07f, 0.08f},
                   {{0, 1.85f, 0.01f}, 0, 0}},
                  24, EDGES::HARD);
}

// Down to the ears, with a spike.
static SHAPE helmet()
{
    return lofted({{{0, 1.69f, 0}, 0.104f, 0.114f},
                   {{0, 1.70f, 0}, 0.118f, 0.128f},
                   {{0, 1.72f, 0}, 0.105f, 0.115f},
                   {{0, 1.78f, 0}, 0.09f, 0.1f},
                   {{0, 1.83f, 0}, 0.05f, 0.055f},
                   {{0, 1.85f, 0}, 0.014f, 0.014f},
                   {{0, 1.93f, 0}, 0, 0}},
                  24, EDGES::HARD);
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

std::vector<PART> parts(HAT hat)
{
    std::vector<PART> all;
    add_trunk(all);
    add_head(all);
    all.push_back({HEADGEAR, hat == HAT::STRAW ? straw_hat() : helmet(), stiff(HEAD)});
    add_limbs(all, 1, UPPER_ARM_LEFT, THIGH_LEFT);
    add_limbs(all, -1, UPPER_ARM_RIGHT, THIGH_RIGHT);
    return all;
}

}  // namespace EXAMPLES::MAN
