// What is computed from a clip after loading: the summary and the check of the stored rotations.

#include "foundation/messages.h"
#include "tests/support/animation/made_file.h"

#include <cmath>
#include <numbers>

using namespace SUPPORT;

namespace {

struct MESSAGES final : KN::MessageSink {
    MESSAGES() : before(KN::set_thread_message_sink(this)) {}
    ~MESSAGES() { KN::set_thread_message_sink(before); }
    void message(KN::String const &line, int) override { lines.push_back(line); }

    KN::MessageSink *before;
    std::vector<std::string> lines;
};

// One bone whose frames have these headings, in degrees, 0.5 m apart along z.
std::unique_ptr<ANIMATION_CLIP> turning(std::vector<double> const &degrees, std::uint32_t options = 0, float fps = 2)
{
    MADE_FILE file;
    file.fps = fps;
    file.duration = 2;
    file.bones = {{"root", -1}};
    file.translation_map = file.rotation_map = {0};
    for (double heading : degrees) {
        float const half = float(heading * std::numbers::pi / 360);
        float const z = 0.5f * float(file.frames.size());
        file.frames.push_back({{{0, 1 + z, z}}, {pack_quaternion({0, std::sin(half), 0, std::cos(half)})}});
    }
    DISK_FILE disk(file.bytes());
    return std::make_unique<ANIMATION_CLIP>(disk.file, nullptr, options, CLIP_SOURCE{"turn"}, animation_heap());
}

double degrees_of(float radians) { return double(radians) * 180 / std::numbers::pi; }

}  // namespace

TEST(ClipSummary, TellsHowTheRootMoves)
{
    auto const clip = turning({90, 90, 90, 90, 90});
    EXPECT_NEAR(0x4000, clip->first_heading, 1);
    EXPECT_EQ((VECTOR2{0, 1}), clip->move_direction);
    EXPECT_EQ(2, clip->move_length);
    EXPECT_EQ(0.5f, clip->first_second_length);  // to frame fps - 1
    EXPECT_EQ(1, clip->speed);
    EXPECT_EQ(2, clip->height_change);
    EXPECT_EQ(1, clip->height_rate);
    EXPECT_EQ(0.5f, turning({0, 0, 0, 0}, ANIMATION_SPEED_OF_SECOND)->speed);
    EXPECT_EQ(1.5f, turning({0, 0, 0, 0}, 0, 1000)->first_second_length);  // shorter than a second
    EXPECT_EQ(0, turning({0, 0, 0, 0}, 0, 0.25f)->first_second_length);    // less than a frame a second
    EXPECT_EQ(0, turning({0, 0, 0, 0}, 0, NAN)->first_second_length);

    auto const still = turning({45});
    EXPECT_EQ(0, still->move_length);
    EXPECT_EQ((VECTOR2{}), still->move_direction);
    EXPECT_EQ(0, still->turn);
}

// The short way between the ends, unless the frames go the other way round.
TEST(ClipSummary, TurnGoesTheWayOfTheFrames)
{
    struct {
        std::vector<double> headings;
        double turn;
    } const cases[] = {
        {{0, 30, 60}, 60},
        {{0, -30, -60}, -60},
        {{0, -70, -140, -210, -280}, -280},  // the short way would be 80
        {{0, 70, 140, 210, 280}, 280},
        {{170, -170}, 20},
        {{0, 120, 240, 360, 480}, 120},  // whole turns are not counted
    };
    for (auto const &c : cases) {
        auto const clip = turning(c.headings);
        EXPECT_NEAR(c.turn, degrees_of(clip->turn), 0.02);
        EXPECT_NEAR(c.turn / 2, degrees_of(clip->turn_rate), 0.02);
    }
}

TEST(ClipOrientations, FaultyRotationsAreToldOnceInOrder)
{
    MADE_FILE file = made_walk(3);
    auto const of_length = [](double length) {
        return PACKED_QUATERNION{0, 0, std::int16_t(std::lround(length * 32767.5)), 0};
    };
    MESSAGES messages;
    auto const check = [&file, &messages](SKELETON const *skeleton) {
        messages.lines.clear();
        DISK_FILE disk(file.bytes());
        ANIMATION_CLIP const clip(disk.file, skeleton, 0, {"raw/walk 100%s.vx2"}, animation_heap());
        EXPECT_TRUE(clip.check_bone_orientations());
        return messages.lines;
    };
    for (double length : {0.99, 0.9905, 1.0})
        for (MADE_FRAME &frame : file.frames) {
            frame.rotations[0] = of_length(length);
            EXPECT_TRUE(check(nullptr).empty()) << length;
        }
    // The first fault is that of place 1; that of place 0 is 1.011 long.
    file.frames[0].rotations[1] = of_length(0.989);
    file.frames[1].rotations = {{16384, 16384, 16384, 17100}, of_length(0.5)};
    EXPECT_EQ(
        std::vector<std::string>{
            "The following file (raw/walk 100%s.vx2) has issues with the following indexed bones orientations "
            "(quaternions). This is probably due to spurious scaling data in MotionBuilder or Max. Please fix "
            "these problems and re-export : 1 ; 0 ; "},
        check(nullptr));
    DISK_FILE skeleton_file(made_skeleton().bytes());
    SKELETON const skeleton(skeleton_file.file, skeleton_file.file, 0, "", "", animation_heap());
    EXPECT_EQ(
        std::vector<std::string>{
            "The following file (raw/walk 100%s.vx2) has issues with the following bones orientations "
            "(quaternions). This is probably due to spurious scaling data in MotionBuilder or Max. Please fix "
            "these problems and re-export : spine ; hips ; "},
        check(&skeleton));
}
