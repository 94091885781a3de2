// A folder for one test, gone afterwards.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

class SCRATCH {
public:
    SCRATCH()
    {
        std::string name = (std::filesystem::temp_directory_path() / "exchange-test-XXXXXX").string();
        folder = ::mkdtemp(name.data());
    }
    ~SCRATCH() { std::filesystem::remove_all(folder); }
    SCRATCH(SCRATCH const &) = delete;
    SCRATCH &operator=(SCRATCH const &) = delete;

    std::string path(std::string const &name) const { return folder + "/" + name; }
    std::string write(std::string const &name, std::string const &bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    std::string read(std::string const &name) const
    {
        std::ostringstream text;
        text << std::ifstream(path(name), std::ios::binary).rdbuf();
        return text.str();
    }
    std::size_t file_count() const
    {
        return std::size_t(std::distance(std::filesystem::directory_iterator(folder), {}));
    }

private:
    std::string folder;
};
