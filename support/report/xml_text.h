// Writes XML as a stream of calls, from the top to the bottom: elements, attributes, texts and comments. Only the open
// elements are remembered, so that a document may be of any size. Nothing is escaped: what the caller hands over must
// be fit for its place, "&lt;" rather than "<". The file is UTF-8 and indented by tabs.
//
// Attributes come before the texts, comments and children of their element. Elements that are not ended stay open in
// the file. A writer is used by one thread at a time.
#pragma once

#include "support/report/wide_file.h"

#include <concepts>

namespace SUPPORT {

// A name. The length of a literal is known when the program is compiled: to count its units takes longer than all else
// that is done with it.
struct XML_NAME : std::u16string_view {
    template <std::size_t SIZE>
    consteval XML_NAME(char16_t const (&literal)[SIZE]) : std::u16string_view(literal, SIZE - 1)
    {}
    template <std::convertible_to<std::u16string_view> TEXT>
    constexpr XML_NAME(TEXT const &text) : std::u16string_view(text)
    {}
};

struct XML_ELEMENT {
    KN::UniString name;

    explicit XML_ELEMENT(XML_NAME element_name) : name(element_name) {}
};

// Numbers are decimal, floats with two digits behind the point.
struct XML_ATTRIBUTE {
    KN::UniString name, value;

    XML_ATTRIBUTE(XML_NAME attribute_name, KN::UniString text) : name(attribute_name), value(std::move(text)) {}
    XML_ATTRIBUTE(XML_NAME attribute_name, int number)
        : name(attribute_name), value(KN::UniString::format_signed(number))
    {}
    XML_ATTRIBUTE(XML_NAME attribute_name, unsigned number) : name(attribute_name), value(KN::UniString::format(number))
    {}
    XML_ATTRIBUTE(XML_NAME attribute_name, float number)
        : name(attribute_name), value(KN::UniString::format(number, 2, true))
    {}
    // A literal is a text: its pointer must not come here.
    template <std::same_as<bool> BOOL>
    XML_ATTRIBUTE(XML_NAME attribute_name, BOOL truth)
        : name(attribute_name), value(truth ? XML_NAME(u"true") : XML_NAME(u"false"))
    {}
};

struct XML_TEXT {
    KN::UniString text;

    explicit XML_TEXT(KN::UniString any) : text(std::move(any)) {}
    explicit XML_TEXT(int number) : text(KN::UniString::format_signed(number)) {}
    explicit XML_TEXT(unsigned number) : text(KN::UniString::format(number)) {}
    explicit XML_TEXT(float number) : text(KN::UniString::format(number, 2, true)) {}
};

struct XML_COMMENT {
    KN::UniString text;

    explicit XML_COMMENT(KN::UniString any) : text(std::move(any)) {}
};

// The order of the operations is that of their slots.
class XML_WRITER {
public:
    virtual void comment(XML_COMMENT const &comment);
    virtual void text(XML_TEXT const &text);
    virtual void attribute(XML_ATTRIBUTE const &attribute);
    // Nothing if no element is open.
    virtual void end_element();
    virtual void begin_element(XML_ELEMENT const &element);
    virtual ~XML_WRITER() = default;

    // Where the text goes, and whether it gets there.
    WIDE_FILE_OUT &stream() { return out; }

protected:
    XML_WRITER() = default;

    WIDE_FILE_OUT out;

private:
    struct OPEN_ELEMENT {
        KN::UniString name;
        bool tag_closed = false;  // the ">" of the start tag is out
        bool has_attribute = false;
        bool has_text = false;
        bool has_child = false;
        bool has_comment = false;
    };

    OPEN_ELEMENT *top();
    void close_start_tag(OPEN_ELEMENT &element);

    KN::DynamicArray<OPEN_ELEMENT> element_stack;  // entries from `depth` on are kept for their memory
    std::uint32_t depth = 0;                       // open elements
};

class XML_FILE_WRITER final : public XML_WRITER {
public:
    // Puts the declaration into a new file. If that cannot be opened, the stream is not good, and all goes nowhere.
    explicit XML_FILE_WRITER(KN::String const &path);
};

}  // namespace SUPPORT
