#include "Plugins/Vx2/host/vfs.h"

#include "foundation/file.h"

#include <filesystem>

namespace UTILITYDLL {

namespace {

// Goes down `path`, section by section, and takes entries whose names agree apart from case where none agrees whole;
// empty if there is none.
KN::String find_in_any_case(KN::String const &root, KN::String const &path)
{
    std::error_code fault;
    std::filesystem::path at(root.empty() ? std::string("/") : std::string(root));
    for (std::filesystem::path const &section : std::filesystem::path(std::string(path)).relative_path()) {
        if (section.empty() || std::filesystem::exists(at / section, fault)) {
            at /= section;
            continue;
        }
        KN::String const wanted = KN::String(section.string()).lower();
        std::filesystem::path found;
        for (std::filesystem::directory_iterator entry(at, fault), end; !fault && entry != end; entry.increment(fault))
            if (KN::String(entry->path().filename().string()).lower() == wanted &&
                (found.empty() || entry->path() < found))
                found = entry->path();
        if (found.empty())
            return {};
        at = found;
    }
    return KN::String(at.string());
}

}  // namespace

KN::String VFS::find(KN::String const &name) const
{
    KN::String const path = KN::disk_path(name);
    if (path.empty())
        return {};
    bool const is_absolute = path.front() == '/';
    for (KN::String const &root : is_absolute ? KN_STD::VECTOR<KN::String>() : roots) {
        if (KN::exists(root + "/" + path))
            return root + "/" + path;
        if (KN::String const found = find_in_any_case(root, path); !found.empty())
            return found;
    }
    if (KN::exists(path))
        return path;
    return is_absolute ? find_in_any_case({}, path) : KN::String();
}

VFS &vfs()
{
    static VFS only;
    return only;
}

}  // namespace UTILITYDLL
