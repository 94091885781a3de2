#include "support/report/animation_timing.h"

#include "foundation/file.h"
#include "foundation/heap.h"
#include "foundation/messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <thread>

using namespace SUPPORT;
using testing::MatchesRegex;

namespace {

struct LINES final : KN::MessageSink {
    LINES() : before(KN::set_thread_message_sink(this)) {}
    ~LINES() { KN::set_thread_message_sink(before); }
    void message(KN::String const &line, int) override { all.emplace_back(line.c_str()); }

    std::vector<std::string> all;
    KN::MessageSink *before;
};

void wait(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

KN::String log_name() { return KN::String(testing::TempDir() + "animation_timing_test.log"); }

}  // namespace

TEST(AnimationTiming, WithoutALogNothingIsSaid)
{
    LINES lines;
    animation_timing_close_log();
    animation_timing_start();
    animation_timing_step("step");
    EXPECT_TRUE(lines.all.empty());
    EXPECT_FALSE(animation_timing_open_log(KN::String("/nowhere/at/all.log")));
    animation_timing_step("step");
    EXPECT_TRUE(lines.all.empty());
}

// A thread that has named no section says so.
TEST(AnimationTiming, AStepIsLoggedAndTold)
{
    std::thread([] {
        LINES lines;
        ASSERT_TRUE(animation_timing_open_log(log_name()));
        animation_timing_start();
        lines.all.clear();
        void *const block = KN::custom_malloc(3 << 20, KN::HEAP_ANIMATION);
        animation_timing_step("100% walk");
        KN::custom_free(block);
        animation_timing_step("run");
        ASSERT_EQ(lines.all.size(), 2u);
        EXPECT_THAT(lines.all[0],
                    MatchesRegex("NO SECTIONS STARTED - USE ANIMATION_TIMING_INIT: 100% walk \\([0-9]+ms delta, "
                                 "[0-9]+ms total, 3MB allocated total, 3145728 bytes delta allocated, "
                                 "total UniStrings:0\\)"));
        // The change counts from the end of the last step, after which the block was freed.
        EXPECT_THAT(lines.all[1], testing::HasSubstr(" 0MB allocated total, -3145728 bytes delta allocated,"));
        animation_timing_close_log();
    }).join();
    KN::MemFileIn file;
    ASSERT_TRUE(file.open(log_name(), true));
    std::string text(file.size(), '\0');
    file.read(text.data(), file.size());
    EXPECT_EQ(text, std::string("100% walk,0,0,3145728,3145728\r\n\0run,0,0,-3145728,0\r\n\0", 53));
    std::remove(log_name().c_str());
}

TEST(AnimationTiming, TheSlowestStepsAreReported)
{
    LINES lines;
    ASSERT_TRUE(animation_timing_open_log(log_name()));
    ANIMATION_TIMING_INIT("Load", 2);
    animation_timing_start();
    for (int const milliseconds : {5, 150, 1, 400}) {
        wait(milliseconds);
        animation_timing_step(("step" + std::to_string(milliseconds)).c_str());  // the text goes, the name stays
    }
    lines.all.clear();
    animation_timing_report();
    ASSERT_EQ(lines.all.size(), 3u);
    EXPECT_THAT(lines.all[0], MatchesRegex("Load: Top 2 took [0-9]+ ms \\([0-9]+\\.[0-9]%\\)"));
    EXPECT_THAT(lines.all[1], MatchesRegex("  0: step400, [4-9][0-9][0-9] ms \\([0-9]+\\.[0-9]%\\)"));
    EXPECT_THAT(lines.all[2], MatchesRegex("  1: step150, [0-9]+ ms \\([0-9]+\\.[0-9]%\\)"));

    lines.all.clear();
    ANIMATION_TIMING_INIT("Load", 0);  // no list, no report
    animation_timing_step("step");
    lines.all.clear();
    animation_timing_report();
    EXPECT_TRUE(lines.all.empty());
    animation_timing_close_log();
    std::remove(log_name().c_str());
}
