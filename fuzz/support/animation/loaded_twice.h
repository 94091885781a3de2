// Hostile bytes as a file and as a stream of small windows, for loaders that take both.
#pragma once

#include "foundation/buffered_stream.h"
#include "foundation/file.h"
#include "foundation/messages.h"
#include "support/animation/frame.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace SUPPORT {

inline void require(bool held, char const *what)
{
    if (!held) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

struct NO_MESSAGES final : KN::MessageSink {
    void message(KN::String const &, int) override {}
};

// A file in memory, whose name only this process knows.
class FILE_OF_BYTES {
public:
    FILE_OF_BYTES(void const *bytes, std::size_t size) : handle(memfd_create("fuzz", 0))
    {
        require(handle >= 0 && write(handle, bytes, size) == ssize_t(size), "bytes can stand in a file");
        require(file.open(KN::String("/proc/self/fd/" + std::to_string(handle)), true), "the file opens");
    }
    ~FILE_OF_BYTES() { close(handle); }

    KN::FileIn file;

private:
    int handle;
};

template <class T>
bool same_bytes(std::span<T> a, std::span<T> b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size_bytes()) == 0);
}

inline bool same_frames(ANIMATION_FRAME const &a, ANIMATION_FRAME const &b)
{
    return same_bytes(a.translations, b.translations) && same_bytes(a.rotations, b.rotations) &&
           same_bytes(a.translation_map, b.translation_map) && same_bytes(a.rotation_map, b.rotation_map) &&
           std::memcmp(&a.root_position, &b.root_position, sizeof a.root_position) == 0 && a.heading == b.heading;
}

inline bool same_bones(BONE_TABLE a, BONE_TABLE b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](BONE_RECORD const &x, BONE_RECORD const &y) {
        return x.name == y.name && x.parent == y.parent;
    });
}

}  // namespace SUPPORT
