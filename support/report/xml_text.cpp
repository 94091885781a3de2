#include "support/report/xml_text.h"

namespace SUPPORT {

XML_WRITER::OPEN_ELEMENT *XML_WRITER::top() { return depth != 0 ? &element_stack[depth - 1] : nullptr; }

void XML_WRITER::close_start_tag(OPEN_ELEMENT &element)
{
    if (!element.tag_closed)
        out.put_bytes(">");
    element.tag_closed = true;
}

void XML_WRITER::new_line()
{
    out.put_bytes("\n");
    out.put_bytes('\t', depth);
}

void XML_WRITER::comment(XML_COMMENT const &comment)
{
    if (OPEN_ELEMENT *const parent = top()) {
        close_start_tag(*parent);
        new_line();
        parent->has_comment = true;
    }
    out.put_bytes("<!-- ");
    out.put(comment.text);
    out.put_bytes("-->");
}

void XML_WRITER::text(XML_TEXT const &text)
{
    if (OPEN_ELEMENT *const parent = top()) {
        close_start_tag(*parent);
        parent->has_text = true;
    }
    out.put(text.text);
}

void XML_WRITER::attribute(XML_ATTRIBUTE const &attribute)
{
    if (OPEN_ELEMENT *const element = top())
        element->has_attribute = true;
    out.put_bytes(" ");
    out.put(attribute.name);
    out.put_bytes("=\"");
    out.put(attribute.value);
    out.put_bytes("\"");
}

void XML_WRITER::end_element()
{
    if (depth == 0)
        return;
    OPEN_ELEMENT const &element = element_stack[--depth];
    if (!element.tag_closed && element.has_attribute) {
        out.put_bytes("/>");
        return;
    }
    if (!element.tag_closed)
        out.put_bytes(">");
    else if (element.has_child || element.has_comment)
        new_line();
    out.put_bytes("</");
    out.put(element.name);
    out.put_bytes(">");
}

void XML_WRITER::begin_element(XML_ELEMENT const &element)
{
    if (OPEN_ELEMENT *const parent = top()) {
        close_start_tag(*parent);
        parent->has_child = true;
        new_line();
    }
    if (depth == element_stack.count)
        element_stack.append();
    OPEN_ELEMENT &entry = element_stack[depth];
    entry.tag_closed = entry.has_attribute = entry.has_text = entry.has_child = entry.has_comment = false;
    entry.name.assign(element.name);
    out.put_bytes("<");
    out.put(element.name);
    ++depth;
}

XML_FILE_WRITER::XML_FILE_WRITER(KN::String const &path)
{
    if (out.open(path))
        out.put_bytes("<?xml version=\"1.0\"?>\n");
}

}  // namespace SUPPORT
