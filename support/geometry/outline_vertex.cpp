#include "support/geometry/outline_vertex.h"

#include <charconv>

namespace SUPPORT {

// One decimal, with a point whatever the locale.
static void append_number(KN::String &text, float value)
{
    char digits[64];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 1).ptr);
}

static void append_point(KN::String &text, OUTLINE_VERTEX const &vertex)
{
    text += '(';
    append_number(text, vertex.x);
    text += ',';
    append_number(text, vertex.y);
    text += ')';
}

static VECTOR2 direction(OUTLINE_VERTEX const &from, OUTLINE_VERTEX const &to)
{
    VECTOR2 const way = {to.x - from.x, to.y - from.y};
    return way * (1 / std::sqrt(dot(way, way)));
}

bool check_corner(OUTLINE_VERTEX const &vertex, KN::String &text)
{
    OUTLINE_VERTEX const &previous = *vertex.previous, &next = *vertex.next;
    bool const turns_back = !(dot(direction(previous, vertex), direction(vertex, next)) >= -0.99f);
    if (!turns_back || (previous.x == next.x && previous.y == next.y))
        return false;

    text = "OUTLINE_VERTEX excessively sharp corner\nline";
    append_point(text, previous);
    append_point(text, vertex);
    text += " to line";
    append_point(text, vertex);
    append_point(text, next);
    return true;
}

bool check_ring(OUTLINE_VERTEX const &vertex, KN::String &text)
{
    bool found = false;
    OUTLINE_VERTEX const *at = &vertex;
    do {
        found |= check_corner(*at, text);
        at = at->next;
    } while (at != &vertex);
    return found;
}

}  // namespace SUPPORT
