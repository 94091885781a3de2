// The virtual file system of the game tools: one name space over several folders.
#pragma once

#include "Plugins/Vx2/host/library_api.h"
#include "foundation/containers.h"
#include "foundation/string.h"

namespace UTILITYDLL {

class UTILITY_API VFS {
public:
    // The folders that names are looked for in, in that order. Set before actions run.
    void set_roots(KN_STD::VECTOR<KN::String> folders) { roots = std::move(folders); }

    // The path on disk of what stands at `name` below one of the roots, or at `name` itself; empty if nothing does.
    // Where the disk tells cases apart, a name that differs from the disk's in the case of letters is found too. Any
    // thread.
    KN::String find(KN::String const &name) const;
    bool exists(KN::String const &name) const { return !find(name).empty(); }

private:
    KN_STD::VECTOR<KN::String> roots;
};

UTILITY_API VFS &vfs();

}  // namespace UTILITYDLL
