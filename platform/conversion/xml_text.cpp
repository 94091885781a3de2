#include "platform/conversion/xml_text.h"

#include <charconv>

namespace TOOLDATABUILDER {

std::string xml_escaped(std::string_view text)
{
    std::string escaped;
    for (char const unit : text) {
        switch (unit) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += static_cast<unsigned char>(unit) < 0x20 ? '?' : unit;
        }
    }
    return escaped;
}

std::string number_text(float value)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof(text), value).ptr};
}

}  // namespace TOOLDATABUILDER
