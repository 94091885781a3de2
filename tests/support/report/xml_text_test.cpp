#include "support/report/xml_text.h"
#include "tests/support/slot.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using namespace SUPPORT;

namespace {

// The file that `write` makes, without its declaration.
std::string file_of(std::function<void(XML_WRITER &)> const &write)
{
    KN::String const path = testing::TempDir() + "xml_text_test.xml";
    {
        XML_FILE_WRITER writer(path);
        write(writer);
        EXPECT_TRUE(writer.stream().good());
    }
    KN::FileIn file;
    EXPECT_TRUE(file.open(path, true));
    std::string bytes(file.size(), '\0');
    file.read(bytes.data(), file.size());
    std::filesystem::remove(path.c_str());
    std::string const declaration = "<?xml version=\"1.0\"?>\n";
    EXPECT_TRUE(bytes.starts_with(declaration));
    return bytes.substr(declaration.size());
}

XML_ELEMENT const a(u"a"), b(u"b");

TEST(XmlText, StandsInTheFile)
{
    struct {
        char const *text;
        std::function<void(XML_WRITER &)> write;
    } const cases[] = {
        {"<a></a>",
         [](XML_WRITER &xml) {
             xml.begin_element(a);
             xml.end_element();
         }},
        {"<a x=\"1\" y=\"&<\"/>",
         [](XML_WRITER &xml) {
             xml.begin_element(a);
             xml.attribute({u"x", 1});
             xml.attribute({u"y", u"&<"});
             xml.end_element();
         }},
        {"<a>text</a>",
         [](XML_WRITER &xml) {
             xml.begin_element(a);
             xml.text(XML_TEXT(u"text"));
             xml.end_element();
         }},
        {"<a>text\n\t<b>\n\t\t<a></a>\n\t</b>\n</a>",
         [](XML_WRITER &xml) {
             xml.begin_element(a);
             xml.text(XML_TEXT(u"text"));
             xml.begin_element(b);
             xml.begin_element(a);
             for (int i = 0; i < 3; ++i)
                 xml.end_element();
         }},
        {"<!-- n--><a x=\"true\">\n\t<!-- m-->\n\t<b></b>\n</a><!-- end-->",
         [](XML_WRITER &xml) {
             xml.comment(XML_COMMENT(u"n"));
             xml.begin_element(a);
             xml.attribute({u"x", true});
             xml.comment(XML_COMMENT(u"m"));
             xml.begin_element(b);
             xml.end_element();
             xml.end_element();
             xml.comment(XML_COMMENT(u"end"));
         }},
        {"<a>\n\t<!-- m-->\n</a>",
         [](XML_WRITER &xml) {
             xml.begin_element(a);
             xml.comment(XML_COMMENT(u"m"));
             xml.end_element();
         }},
        {"<a>1 x=\"2\"</a>",  // too late for the start tag
         [](XML_WRITER &xml) {
             xml.begin_element(a);
             xml.text(XML_TEXT(1));
             xml.attribute({u"x", 2});
             xml.end_element();
         }},
        {"<a>\n\t<b x=\"1\"/>\n\t<b></b>",  // what is not ended stays open, and a flag does not outlive its element
         [](XML_WRITER &xml) {
             xml.begin_element(a);
             xml.begin_element(b);
             xml.attribute({u"x", 1});
             xml.end_element();
             xml.begin_element(b);
             xml.end_element();
         }},
        {"<a></a>",  // one end too many
         [](XML_WRITER &xml) {
             xml.begin_element(a);
             xml.end_element();
             xml.end_element();
         }},
    };
    for (auto const &c : cases)
        EXPECT_EQ(file_of(c.write), c.text);
}

TEST(XmlText, Values)
{
    EXPECT_EQ(file_of([](XML_WRITER &xml) {
                  xml.attribute({u"least", std::int32_t(-2147483647 - 1)});
                  xml.attribute({u"most", 4294967295u});
                  xml.attribute({u"float", 1.0f});
                  xml.attribute({u"float", -0.125f});
                  xml.attribute({u"float", 1e10f});
                  xml.attribute({u"bool", false});
                  xml.text(XML_TEXT(-5));
                  xml.text(XML_TEXT(5u));
                  xml.text(XML_TEXT(2.5f));
              }),
              " least=\"-2147483648\" most=\"4294967295\" float=\"1.00\" float=\"-0.12\" float=\"10000000000.00\""
              " bool=\"false\"-552.50");
}

// Around and above the length of the buffer, where pieces meet, and with letters of one to four bytes.
TEST(XmlText, LongAndForeignTexts)
{
    std::u16string const foreign = u"\u00e4\u20ac\U0001F600";
    std::string const bytes = "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80";
    for (std::size_t length : {0, 3, 4, 7, 8, 9, 17, 262143, 262144, 262145, 600000}) {
        std::string const text = file_of([&](XML_WRITER &xml) {
            xml.text(XML_TEXT(KN::UniString(std::u16string(length, u'x'))));
            xml.text(XML_TEXT(KN::UniString(foreign + std::u16string(length, u'y') + foreign)));
            xml.text(XML_TEXT(KN::UniString(1, char16_t(0xd83d))));
        });
        EXPECT_TRUE(text == std::string(length, 'x') + bytes + std::string(length, 'y') + bytes + "\xef\xbf\xbd")
            << length;
    }
}

TEST(XmlText, DeepElements)
{
    constexpr std::size_t depth = 20;
    std::string expected = "<a>";
    for (std::size_t i = 1; i < depth; ++i)
        expected += "\n" + std::string(i, '\t') + "<a>";
    expected += "</a>";
    for (std::size_t i = depth - 1; i-- > 0;)
        expected += "\n" + std::string(i, '\t') + "</a>";
    EXPECT_EQ(file_of([](XML_WRITER &xml) {
                  for (std::size_t i = 0; i < depth; ++i)
                      xml.begin_element(a);
                  for (std::size_t i = 0; i < depth; ++i)
                      xml.end_element();
              }),
              expected);
}

TEST(XmlText, AFileThatCannotBeOpenedIsAStateOfTheStream)
{
    XML_FILE_WRITER writer(testing::TempDir() + "no such folder/file.xml");
    EXPECT_FALSE(writer.stream().good());
    writer.begin_element(a);
    writer.text(XML_TEXT(KN::UniString(std::u16string(100000, u'x'))));
    writer.end_element();
    EXPECT_FALSE(writer.stream().close());
}

#if defined(HAS_SLOT_OF)
TEST(XmlText, OperationsKeepTheirSlots)
{
    int slot = 0;
    for (int is : {slot_of(&XML_WRITER::comment), slot_of(&XML_WRITER::text), slot_of(&XML_WRITER::attribute),
                   slot_of(&XML_WRITER::end_element), slot_of(&XML_WRITER::begin_element)})
        EXPECT_EQ(is, slot++);
}
#endif

}  // namespace
