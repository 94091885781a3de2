#include "scene/reference.h"

#include <algorithm>

namespace VEX2_LOADER {

KN::UniString resolve_reference_path(KN::UniString const &base, KN::UniString const &path)
{
    bool const absolute =
        !path.empty() && (path[0] == u'\\' || path[0] == u'/' || path.find(u':') != KN::UniString::npos);
    std::size_t const folder_end = base.rfind(u'\\');
    if (absolute || folder_end == KN::UniString::npos)
        return path;
    return KN::UniString(base.substr(0, folder_end + 1) + path);
}

KN::UniString reference_path_from(KN::UniString const &base, KN::UniString const &path)
{
    KN::UniString with_backslashes = base;
    std::replace(with_backslashes.begin(), with_backslashes.end(), u'/', u'\\');
    return resolve_reference_path(with_backslashes, path);
}

}  // namespace VEX2_LOADER
