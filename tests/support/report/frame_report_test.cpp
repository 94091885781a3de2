#include "support/report/frame_report.h"

#include "foundation/file.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace SUPPORT;

// Mean 20 ms; the sample of 10 ms counts in the deviation as one of 2^32 - 10000 us away from the mean:
// sqrt((4294957.296^2 + 0 + 10^2) / 3) ms.
TEST(FrameReport, TheWholeText)
{
    FRAME_REPORT report;
    for (unsigned const time : {10000u, 20000u, 30000u})
        report.frame.add(time);
    report.gpu.add(8000);
    std::string const rule(80, '=');
    std::string const expected = rule + R"(

Frame time

# frames: 3

frames per second:
   mean 50.0
   min  33.3
   max  100.0

frame times (ms):
   mean    20.0
   min     10.0
   max     30.0
   std dev 2479694.8

individual frame times (ms):
10.0, 20.0, 30.0
)" + rule + "\n\n" + rule + R"(

GPU time

# frames: 1

frames per second:
   mean 125.0
   min  125.0
   max  125.0

frame times (ms):
   mean    8.0
   min     8.0
   max     8.0
   std dev 0.0

individual frame times (ms):
8.0
)" + rule + "\n\n";
    EXPECT_EQ(frame_report_text(report), KN::String(expected));

    KN::String const name(testing::TempDir() + "frame_report_test.txt");
    write_frame_report(report, name);
    KN::MemFileIn file;
    ASSERT_TRUE(file.open(name, true));
    std::string text(file.size(), '\0');
    file.read(text.data(), file.size());
    EXPECT_EQ(text, expected);  // where the system's line end is "\n"
    std::remove(name.c_str());
    write_frame_report(report, KN::String("/nowhere/at/all.txt"));
}
