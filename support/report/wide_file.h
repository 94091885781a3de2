// An output file for wide text: UTF-16 goes in, UTF-8 stands in the file. One thread at a time.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/file.h"

#include <string_view>

namespace SUPPORT {

class WIDE_FILE_OUT {
public:
    WIDE_FILE_OUT() = default;
    ~WIDE_FILE_OUT() { close(); }

    // Creates the file or truncates it. Before this, and after a failure, good() is false and text goes nowhere.
    bool open(KN::String const &path);
    // False once anything has failed. Buffered text may fail later: close() has the last word.
    bool good() const { return file.status() == 0; }
    bool close();

    // A surrogate without its partner in the same text becomes U+FFFD.
    void put(std::u16string_view text);
    // As they are.
    void put_bytes(std::string_view bytes);
    void put_bytes(char byte, unsigned times);

private:
    char *room(std::size_t size);
    void flush();

    static constexpr unsigned buffer_size = 65536;

    KN::FileOut file;
    KN::DynamicArray<char> buffer;
    std::size_t used = 0;
};

}  // namespace SUPPORT
