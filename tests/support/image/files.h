// Files as bytes that tests put together and take apart by hand.
#pragma once

#include "foundation/file.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace SUPPORT {

// A folder that goes with the object.
struct FOLDER {
    std::filesystem::path const path =
        std::filesystem::temp_directory_path() / ("image_test_" + std::to_string(::getpid()));

    FOLDER() { std::filesystem::create_directories(path); }
    ~FOLDER() { std::filesystem::remove_all(path); }

    KN::String at(char const *name) const { return KN::String((path / name).string()); }
    std::string bytes(char const *name) const
    {
        std::ifstream file(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // True if the command, with the folder as the current one, ends well.
    bool run(std::string const &command) const
    {
        return std::system(("cd " + path.string() + " && " + command + " > output 2>&1").c_str()) == 0;
    }
};

inline std::string u16(unsigned value) { return {char(value), char(value >> 8)}; }
inline std::string u32(unsigned value) { return u16(value & 0xffff) + u16(value >> 16); }

// A file in memory that ends where its block on the heap does.
class BYTES_FILE {
public:
    explicit BYTES_FILE(std::string const &source)
        : bytes(KN::custom_malloc(source.size(), 0)), file(bytes, unsigned(source.size()))
    {
        source.copy(static_cast<char *>(bytes), source.size());
    }
    ~BYTES_FILE() { KN::custom_free(bytes); }

private:
    void *bytes;

public:
    KN::MemFileIn file;
};

}  // namespace SUPPORT
