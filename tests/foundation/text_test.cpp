#include "foundation/messages.h"
#include "foundation/string.h"

#include <gtest/gtest.h>

#include <thread>

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

TEST(Text, NumbersAndLowerCase)
{
    EXPECT_EQ(KN::UniString::format(4294967295u), u"4294967295");
    EXPECT_EQ(KN::UniString::format_signed(-12), u"-12");
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
