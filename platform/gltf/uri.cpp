#include "platform/gltf/uri.h"

namespace GLTF {

static bool is_plain(unsigned char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == '-' || byte == '.' || byte == '_' || byte == '~' || byte == '/';
}

std::string encoded_uri(std::string_view path)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string uri;
    uri.reserve(path.size());
    for (char const unit : path) {
        auto const byte = static_cast<unsigned char>(unit);
        if (is_plain(byte)) {
            uri += unit;
        } else {
            uri += '%';
            uri += digits[byte >> 4];
            uri += digits[byte & 15];
        }
    }
    return uri;
}

static int digit(char unit)
{
    return unit >= '0' && unit <= '9'   ? unit - '0'
           : unit >= 'a' && unit <= 'f' ? unit - 'a' + 10
           : unit >= 'A' && unit <= 'F' ? unit - 'A' + 10
                                        : -1;
}

std::string decoded_uri(std::string_view uri)
{
    std::string path;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        bool const is_code = uri[i] == '%' && uri.size() - i > 2 && digit(uri[i + 1]) >= 0 && digit(uri[i + 2]) >= 0;
        path += is_code ? char(digit(uri[i + 1]) * 16 + digit(uri[i + 2])) : uri[i];
        i += is_code ? 2 : 0;
    }
    return path;
}

std::string relative_path(std::string_view from, std::string_view to)
{
    std::size_t common = 0;  // characters of the folders that both share, the slash included
    for (std::size_t i = 0; i < from.size() && i < to.size() && from[i] == to[i]; ++i)
        if (from[i] == '/')
            common = i + 1;
    std::string way;
    for (char const unit : from.substr(common))
        if (unit == '/')
            way += "../";
    return way.append(to.substr(common));
}

}  // namespace GLTF
