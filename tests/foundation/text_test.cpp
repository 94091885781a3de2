#include "foundation/messages.h"
#include "foundation/string.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <random>
#include <thread>
#include <vector>

namespace {

TEST(Text, Utf8AndUtf16LeadIntoEachOther)
{
    const struct {
        char const *bytes;
        char16_t const *units;
    } pairs[] = {
        {"hut", u"hut"},
        {"\xc3\xbc", u"\u00fc"},
        {"\xe2\x82\xac", u"\u20ac"},
        {"a\xf0\x9f\x8c\xb3z", u"a\U0001f333z"},
    };
    for (auto const &pair : pairs) {
        EXPECT_EQ(KN::from_utf8(pair.bytes), pair.units);
        EXPECT_EQ(KN::to_utf8(pair.units), pair.bytes);
    }
    // Overlong forms, encoded surrogates, cut sequences: one replacement a byte, nothing read beyond the end.
    EXPECT_EQ(KN::from_utf8("\xc0\x80"), u"\ufffd\ufffd");
    EXPECT_EQ(KN::from_utf8("\xed\xa0\x80"), u"\ufffd\ufffd\ufffd");
    EXPECT_EQ(KN::from_utf8("a\xe2\x82"), u"a\ufffd\ufffd");
    EXPECT_EQ(KN::to_utf8(std::u16string(1, char16_t(0xd800)) + u"x"), "\xef\xbf\xbdx");
}

TEST(Text, TheOldPairMapsBytesToUnitsAndLosesTheRest)
{
    EXPECT_EQ(KN::must_fix_string_widen("\xff"), std::u16string(1, char16_t(0xff)));
    EXPECT_EQ(KN::must_fix_string_narrow(u"\u00ff\u0100"), "\xff?");
}

TEST(Text, NumbersAsPrintfHasThem)
{
    std::mt19937 random(1);
    for (unsigned power = 1, i = 0; i < 10; power *= 10, ++i)
        for (unsigned const number : {power - 1, power, power + 7, power * 4 + 3, unsigned(random())}) {
            EXPECT_EQ(KN::to_utf8(KN::UniString::format(number)), std::to_string(number));
            EXPECT_EQ(KN::to_utf8(KN::UniString::format_signed(int(number))), std::to_string(int(number)));
            EXPECT_EQ(KN::to_utf8(KN::UniString::format_signed(-int(number))), std::to_string(-int(number)));
        }
    std::vector<float> values = {0.125f,   0.375f,    0.005f, 999.995f, 999.994995f, 9999.985f,
                                 9999.99f, 9999.995f, 1e9f,   NAN,      INFINITY};
    for (unsigned i = 0; i < 20000; ++i) {
        values.push_back(std::bit_cast<float>(unsigned(random())));
        values.push_back(float(random() % 2000000) / 128);  // many of them halfway between two texts
    }
    for (float const value : values)
        for (float const both : {value, -value}) {
            char text[64];  // FLT_MAX has 39 digits
            std::snprintf(text, sizeof(text), "%.2f", double(both));
            EXPECT_EQ(KN::to_utf8(KN::UniString::format(both, 2, true)), text);
        }
}

TEST(Text, TrailingZerosAndLowerCase)
{
    EXPECT_EQ(KN::UniString::format(2.5f, 3, true), u"2.500");
    EXPECT_EQ(KN::UniString::format(2.5f, 3, false), u"2.5");
    EXPECT_EQ(KN::UniString::format(20.0f, 3, false), u"20");
    EXPECT_EQ(KN::UniString::format(20.0f, 0, false), u"20");
    EXPECT_EQ(KN::String("Hut_\xc3\x9c").lower(), "hut_\xc3\x9c");
    EXPECT_EQ(KN::printable("a\x1b[2Jb\n"), "a\\x1b[2Jb\\x0a");
}

struct RECORDER final : KN::MessageSink {
    void message(KN::String const &line, int level) override { lines += std::to_string(level) + line + ";"; }
    KN::String lines;
};

TEST(Messages, GoToTheThreadsSinkElseToTheProcess)
{
    RECORDER process, thread;
    KN::set_process_message_sink(&process);
    KN::set_thread_message_sink(&thread);
    KN::message(KN::MESSAGE_ERROR, "here");
    std::thread([] { KN::message_txt("there"); }).join();
    EXPECT_EQ(KN::set_thread_message_sink(nullptr), &thread);
    EXPECT_EQ(KN::set_process_message_sink(nullptr), &process);
    EXPECT_EQ(thread.lines, "2here;");
    EXPECT_EQ(process.lines, "0there;");
}

}  // namespace
