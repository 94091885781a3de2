// What the fuzzers of this folder share.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace FUZZ {

inline void require(bool held, char const *what)
{
    if (!held) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

// A folder that goes when the process does.
class SCRATCH {
public:
    SCRATCH() : folder(std::filesystem::temp_directory_path() / ("fuzz." + std::to_string(getpid())))
    {
        std::filesystem::create_directories(folder);
    }
    ~SCRATCH()
    {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }
    SCRATCH(SCRATCH const &) = delete;
    SCRATCH &operator=(SCRATCH const &) = delete;

    std::string put(std::string const &name, std::string_view bytes) const
    {
        std::filesystem::path const path = folder / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }

    std::filesystem::path const folder;
};

}  // namespace FUZZ
