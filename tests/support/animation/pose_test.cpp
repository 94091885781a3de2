#include "support/animation/pose.h"

#include "support/maths/lanes.h"
#include "tests/support/animation/made_file.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

using namespace SUPPORT;

namespace {

QUATERNION about_y(double degrees)
{
    double const half = degrees * std::numbers::pi / 360;
    return {0, float(std::sin(half)), 0, float(std::cos(half))};
}

double turn_between(QUATERNION const &a, QUATERNION const &b)
{
    return 2 * std::acos(std::min(1.0, std::abs(double(dot(normalised(a), normalised(b))))));
}

template <class T>
bool same_bytes(std::span<T> a, std::span<T> b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size_bytes()) == 0;
}

// A skeleton of `bones` bones and a clip of random frames. Maps, by `kind`: 0 in order, 1 in order with a gap of bones
// that are not animated, 2 in any order with places that do not exist, 3 shorter than the table.
struct RANDOM_ANIMATION {
    RANDOM_ANIMATION(unsigned bones, unsigned kind, unsigned frames = 4, std::uint32_t options = 0)
    {
        std::mt19937 random(bones * 10 + kind);
        std::normal_distribution<float> normal;
        MADE_FILE file;
        for (unsigned i = 0; i < bones; ++i) {
            file.bones.push_back({"bone", i == 0 ? -1 : int(random() % i)});
            file.translation_map.push_back(int(i));
        }
        file.rotation_map = file.translation_map;
        auto const add_frame = [&] {
            MADE_FRAME frame;
            for (unsigned i = 0; i < bones; ++i) {
                frame.translations.push_back({normal(random), normal(random), normal(random)});
                frame.rotations.push_back(pack_quaternion(
                    normalised(QUATERNION{normal(random), normal(random), normal(random), normal(random)})));
            }
            file.frames.push_back(frame);
        };
        add_frame();
        DISK_FILE skeleton_file(file.bytes());
        skeleton = std::make_unique<SKELETON>(skeleton_file.file, skeleton_file.file, 0, "", "", animation_heap());

        for (unsigned i = 0; i < bones; ++i) {
            if (kind == 1)
                file.rotation_map[i] = file.translation_map[i] = i < 5 ? int(i) : i < 22 ? -1 : int(i) - 17;
            if (kind == 2) {
                file.rotation_map[i] = int(random() % (bones + 3)) - 1;
                file.translation_map[i] = int(random() % (2 * bones)) - int(bones / 2);
            }
        }
        if (kind == 2)  // no place comes behind the last that there can be
            file.rotation_map[0] = file.translation_map[0] = std::numeric_limits<int>::max();
        while (file.frames.size() < frames)
            add_frame();
        if (kind == 3)
            file.bones.resize(bones / 2), file.rotation_map.resize(bones / 2), file.translation_map.resize(bones / 2);
        DISK_FILE clip_file(file.bytes());
        clip =
            std::make_unique<ANIMATION_CLIP>(clip_file.file, skeleton.get(), options, CLIP_SOURCE{}, animation_heap());
    }

    std::unique_ptr<SKELETON> skeleton;
    std::unique_ptr<ANIMATION_CLIP> clip;
};

class EITHER_WIDTH : public testing::TestWithParam<bool> {
    void SetUp() override { allow_eight_lanes(GetParam()); }
    void TearDown() override { allow_eight_lanes(true); }
};
INSTANTIATE_TEST_SUITE_P(Pose, EITHER_WIDTH, testing::Bool(),
                         [](auto const &given) { return given.param ? "Eight" : "Four"; });

}  // namespace

// Each bone of a blend is what the operations on one bone give, to the bit, however many bones there are and however
// the maps lead to them.
TEST_P(EITHER_WIDTH, BlendsAreThoseOfSingleBones)
{
    for (unsigned bones : {1u, 3u, 4u, 7u, 8u, 30u, 61u})
        for (unsigned kind = 0; kind < 4; ++kind)
            for (float weight : {0.0f, 0.3f, 0.4999f, 0.5f, 1.0f, 1.75f})
                for (std::uint32_t mode : {BLEND_NEAREST, BLEND_LINEAR, BLEND_SPHERICAL}) {
                    SCOPED_TRACE(testing::Message()
                                 << bones << " bones, maps " << kind << ", " << weight << ", mode " << mode);
                    RANDOM_ANIMATION const made(bones, kind);
                    ANIMATION_FRAME const &a = *made.clip->frames[1], &b = *made.clip->frames[3];
                    POSE whole_a, whole_b, pose, of_poses;
                    blend_frames(pose, a, b, weight, mode, made.skeleton.get(), nullptr);
                    ASSERT_EQ(bones, pose.bone_count);
                    for (unsigned i = 0; i < bones; ++i) {
                        VECTOR3 const from = a.translation_of(i), to = b.translation_of(i);
                        QUATERNION const q = unpack_quaternion(a.rotation_of(i));
                        QUATERNION const r = unpack_quaternion(b.rotation_of(i));
                        bool const takes_b = weight == 1 || (mode == BLEND_NEAREST && weight >= 0.5f);
                        bool const takes_one = takes_b || weight == 0 || mode == BLEND_NEAREST;
                        VECTOR3 const place = takes_one ? takes_b ? to : from : from + (to - from) * weight;
                        QUATERNION const near_r = dot(q, r) < 0 ? -r : r;
                        QUATERNION const turn = takes_one                 ? takes_b ? r : q
                                                : mode == BLEND_SPHERICAL ? slerp(q, r, weight)
                                                                          : q + (near_r + -q) * weight;
                        ASSERT_EQ(0, std::memcmp(&place, &pose.translations[i], sizeof place)) << i;
                        ASSERT_EQ(0, std::memcmp(&turn, &pose.rotations[i], sizeof turn)) << i;
                    }
                    blend_frames(whole_a, a, a, 0, mode, nullptr, nullptr);
                    blend_frames(whole_b, b, b, 1, 7, nullptr, nullptr);  // a weight of 1 comes before any mode
                    blend_poses(of_poses, whole_a, whole_b, weight, mode, nullptr);
                    EXPECT_TRUE(same_bytes(pose.bone_translations(), of_poses.bone_translations()));
                    EXPECT_TRUE(same_bytes(pose.bone_rotations(), of_poses.bone_rotations()));
                }
}

TEST_P(EITHER_WIDTH, WorldMatricesAreProductsWithTheParents)
{
    MATRIX34 const root = local_matrix(about_y(30), {1, 2, 3});
    for (unsigned bones : {1u, 4u, 8u, 30u, 61u}) {
        RANDOM_ANIMATION const made(bones, 0);
        SCRATCH_ALLOCATOR scratch;
        POSE const pose = pose_at(*made.clip, 0.04f, BLEND_LINEAR, nullptr, &scratch);
        for (std::uint32_t limit : {0u, 3u, 1000u}) {
            std::span<MATRIX34> const world = world_matrices(pose, limit, root, scratch);
            ASSERT_EQ(limit == 3 ? std::min(3u, bones) : bones, world.size());
            for (unsigned i = 0; i < world.size(); ++i) {
                int const parent = pose.skeleton[i].parent;
                MATRIX34 const local = local_matrix(pose.rotations[i], pose.translations[i]);
                MATRIX34 const expected = (parent < 0 ? root : world[std::size_t(parent)]) * local;
                ASSERT_EQ(0, std::memcmp(&expected, &world[i], sizeof expected)) << i;
            }
        }
        std::span<MATRIX34> const expected = world_matrices(pose, 0, root, scratch);
        EXPECT_TRUE(same_bytes(expected, world_matrices_at(*made.clip, 0.04f, BLEND_LINEAR, 0, root, scratch)));
        POSE const near = pose_at(*made.clip, 0.1f, BLEND_LINEAR, nullptr, &scratch);  // frame 1 exactly
        EXPECT_TRUE(same_bytes(world_matrices(near, 0, root, scratch),
                               world_matrices_at(*made.clip, 0.06f, BLEND_NEAREST, 0, root, scratch)));
    }
}

TEST(WorldMatrices, ParentsThatAreNotInFrontCountAsNone)
{
    MADE_FILE file = made_skeleton();
    for (int parent : {0, 3, 4, 1000, -7, std::numeric_limits<int>::min()}) {
        file.bones[0].parent = parent;
        DISK_FILE disk(file.bytes());
        SKELETON const skeleton(disk.file, disk.file, 0, "", "", animation_heap());
        SCRATCH_ALLOCATOR scratch;
        MATRIX34 const root = local_matrix({}, {10, 0, 0});
        EXPECT_FLOAT_EQ(10, world_matrices(skeleton.bind_pose, 0, root, scratch)[0][0][3]) << parent;
    }
}

TEST(SelectFrames, TakesTheFramesAroundATime)
{
    float const no_number = std::numeric_limits<float>::quiet_NaN();
    struct {
        std::uint32_t options;
        unsigned frames;
        float time;
        unsigned a, b;
        float fraction;
    } const cases[] = {
        {0, 5, 0.25f, 2, 3, 0.5f},                           // 10 frames a second
        {0, 5, 0.4f, 4, 4, 0},                               // the last frame
        {0, 5, 9, 4, 4, 0},                                  // beyond the end
        {0, 5, 1e30f, 4, 4, 0},     {0, 5, -0.3f, 0, 1, 0},  // before the beginning
        {0, 5, no_number, 0, 1, 0}, {0, 1, 0.05f, 0, 0, 0},
        {2, 5, 0.4f, 0, 1, 0},  // the last frame stands for the first
        {2, 5, 0.75f, 3, 4, 0.5f},  {2, 5, 0.85f, 0, 1, 0.5f},
        {2, 5, -0.3f, 0, 1, 0},     {2, 1, 0.25f, 0, 0, 0},  // nothing to loop through
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(testing::Message() << c.options << " " << c.frames << " frames, " << c.time);
        RANDOM_ANIMATION const made(2, 0, c.frames, c.options);
        FRAME_SELECTION const selected = select_frames(*made.clip, c.time);
        EXPECT_EQ(c.a, selected.a);
        EXPECT_EQ(c.b, selected.b);
        EXPECT_FLOAT_EQ(c.fraction, selected.fraction);
    }
    // The product is one of 32-bit floats: 0.7 * 30 is 21 exactly.
    RANDOM_ANIMATION const made(2, 0, 30);
    made.clip->fps = 30;
    EXPECT_EQ(21u, select_frames(*made.clip, 0.7f).a);
    EXPECT_EQ(0, select_frames(*made.clip, 0.7f).fraction);
}

TEST(PoseAt, IsSafeWithoutFramesAndAgreesWithSingleRotations)
{
    RANDOM_ANIMATION const made(13, 1, 5);
    for (float time : {0.0f, 0.13f, 0.39f, 5.0f}) {
        POSE const pose = pose_at(*made.clip, time, BLEND_SPHERICAL, nullptr, nullptr);
        for (std::uint32_t bone = 0; bone < 13; ++bone)
            EXPECT_EQ(pose.rotations[bone], rotation_at(bone, *made.clip, time));
    }
    DISK_FILE nothing("");
    ANIMATION_CLIP const empty(nothing.file, made.skeleton.get(), 0, {}, animation_heap());
    POSE const bind = pose_at(empty, 1, BLEND_LINEAR, nullptr, nullptr);
    EXPECT_TRUE(same_bytes(made.skeleton->bind_pose.bone_rotations(), bind.bone_rotations()));
    EXPECT_EQ(QUATERNION{}, rotation_delta(0, empty, 0, 1));
}

TEST(RotationDelta, TurnsFromOneTimeToTheOtherAndOverTheEnd)
{
    MADE_FILE file;
    file.bones = {{"wheel", -1}};
    file.translation_map = {-1};
    file.rotation_map = {0};
    // 35 degrees a frame; every second one is stored as its negative.
    for (int i = 0; i < 5; ++i)
        file.frames.push_back({{}, {pack_quaternion(i % 2 == 0 ? about_y(35 * i) : -about_y(35 * i))}});
    DISK_FILE disk(file.bytes());
    ANIMATION_CLIP const clip(disk.file, nullptr, ANIMATION_LOOPS, {}, animation_heap());
    struct {
        float time, span;
        double degrees;
    } const cases[] = {{0, 0.1f, 35}, {0.05f, 0.2f, 70}, {0.35f, 0.1f, 35}, {0.25f, 0.35f, 122.5}, {0.3f, 0, 0}};
    for (auto const &c : cases)
        EXPECT_LT(turn_between(about_y(c.degrees), rotation_delta(0, clip, c.time, c.span)), 2e-3) << c.time;
    // The conjugate, not the rotation itself, is turned to the other factor: far from the identity the sign changes.
    EXPECT_GT(rotation_delta(0, clip, 0, 0.1f).w, 0);
    EXPECT_LT(rotation_delta(0, clip, 0.35f, 0.04f).w, 0);
}

TEST(Heading, FollowsZAndNearTheVerticalY)
{
    auto const about_x = [](double degrees) {
        QUATERNION const q = about_y(degrees);
        return QUATERNION{q.y, 0, 0, q.w};
    };
    auto const degrees = [](ANGLE16 angle) { return double(angle16_units(angle)) * 180 / 32768; };
    EXPECT_NEAR(50, degrees(heading_of(about_y(50), nullptr, 0, false)), 0.01);
    // Pitched by less than 30 degrees off the level only z counts; within 10 degrees of the vertical only y, which
    // leans back when z points down and forward when it points up.
    for (double pitch : {20.0, 45.0, 75.0, 85.0, -45.0, -85.0})
        EXPECT_NEAR(50, degrees(heading_of(about_y(50) * about_x(pitch), nullptr, 0, false)), 0.02) << pitch;
    // A roll near the vertical moves z's heading and, over the blend, less and less of the result.
    QUATERNION const roll = {0, 0, float(std::sin(0.35)), float(std::cos(0.35))};
    for (double pitch : {60.0, 70.0, 85.0}) {
        QUATERNION const q = about_x(pitch) * roll;
        MATRIX33 const m = rotation_matrix(q);
        double const of_z = std::atan2(double(m[0][2]), double(m[2][2]));
        double of_y = std::atan2(double(m[0][1]), double(m[2][1])) + (m[1][2] >= 0 ? std::numbers::pi : 0);
        double const share = std::clamp((std::abs(double(m[1][2])) - std::cos(std::numbers::pi / 3)) /
                                            (std::cos(std::numbers::pi / 18) - std::cos(std::numbers::pi / 3)),
                                        0.0, 1.0);
        double const expected = of_z + share * std::remainder(of_y - of_z, 2 * std::numbers::pi);
        EXPECT_NEAR(
            0, std::remainder(expected * 180 / std::numbers::pi - degrees(heading_of(q, nullptr, 0, false)), 360), 0.02)
            << pitch;
        EXPECT_NEAR(of_z * 180 / std::numbers::pi, degrees(heading_of(q, nullptr, 0, true)), 0.02) << pitch;
    }
    // Against a reference frame: what turns the reference into the rotation.
    DISK_FILE disk(made_skeleton().bytes());
    SKELETON const skeleton(disk.file, disk.file, 0, "", "", animation_heap());
    EXPECT_NEAR(50 - 45, degrees(heading_of(about_y(50), &skeleton.bind_frame, 2, false)), 0.02);
}

TEST(ScratchAllocator, GivesAlignedBlocksThatDoNotOverlap)
{
    SCRATCH_ALLOCATOR scratch(64);
    for (unsigned round = 0; round < 3; ++round) {
        std::vector<std::pair<unsigned char *, std::size_t>> blocks;
        for (std::size_t size : {1u, 7u, 16u, 100u, 3u, 5000u, 40u}) {
            std::size_t const alignment = size % 2 == 0 ? 16 : 4;
            auto *const block = static_cast<unsigned char *>(scratch.allocate(size, alignment));
            EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(block) % alignment);
            std::memset(block, int(size), size);
            blocks.emplace_back(block, size);
        }
        for (auto const &[block, size] : blocks)
            for (std::size_t i = 0; i < size; ++i)
                ASSERT_EQ(static_cast<unsigned char>(size), block[i]);
        scratch.reset();
    }
}
