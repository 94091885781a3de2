#include "support/report/xml_text.h"

namespace SUPPORT {

namespace {

using namespace std::string_view_literals;

std::u16string_view view(KN::UniString const &text) { return text; }

}  // namespace

XML_WRITER::OPEN_ELEMENT *XML_WRITER::top() { return depth != 0 ? &element_stack[depth - 1] : nullptr; }

void XML_WRITER::close_start_tag(OPEN_ELEMENT &element)
{
    if (!element.tag_closed)
        out.put(">"sv);
    element.tag_closed = true;
}

void XML_WRITER::comment(XML_COMMENT const &comment)
{
    if (OPEN_ELEMENT *const parent = top()) {
        close_start_tag(*parent);
        out.put(LINE_START{depth});
        parent->has_comment = true;
    }
    out.put("<!-- "sv, view(comment.text), "-->"sv);
}

void XML_WRITER::text(XML_TEXT const &text)
{
    if (OPEN_ELEMENT *const parent = top()) {
        close_start_tag(*parent);
        parent->has_text = true;
    }
    out.put(view(text.text));
}

void XML_WRITER::attribute(XML_ATTRIBUTE const &attribute)
{
    if (OPEN_ELEMENT *const element = top())
        element->has_attribute = true;
    out.put(" "sv, view(attribute.name), "=\""sv, view(attribute.value), "\""sv);
}

void XML_WRITER::end_element()
{
    if (depth == 0)
        return;
    OPEN_ELEMENT const &element = element_stack[--depth];
    if (!element.tag_closed && element.has_attribute) {
        out.put("/>"sv);
        return;
    }
    if (!element.tag_closed)
        out.put(">"sv);
    else if (element.has_child || element.has_comment)
        out.put(LINE_START{depth});
    out.put("</"sv, view(element.name), ">"sv);
}

void XML_WRITER::begin_element(XML_ELEMENT const &element)
{
    if (OPEN_ELEMENT *const parent = top()) {
        close_start_tag(*parent);
        parent->has_child = true;
        out.put(LINE_START{depth}, "<"sv, view(element.name));
    } else {
        out.put("<"sv, view(element.name));
    }
    if (depth == element_stack.count)
        element_stack.append();
    OPEN_ELEMENT &entry = element_stack[depth];
    entry.tag_closed = entry.has_attribute = entry.has_text = entry.has_child = entry.has_comment = false;
    entry.name.assign(element.name);
    ++depth;
}

XML_FILE_WRITER::XML_FILE_WRITER(KN::String const &path)
{
    if (out.open(path))
        out.put("<?xml version=\"1.0\"?>\n"sv);
}

}  // namespace SUPPORT
