// KN::BufferedStream: bytes that come in windows, for readers of many small fields. A field that lies within the window
// is copied straight out of it; only at the window's end is there a call. What has been taken can be stepped back over
// for a few bytes, also across the beginning of a window.
//
// One thread at a time. BufferedMemory and BufferedFile are the ready forms.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/file.h"

#include <cstdint>
#include <cstring>

namespace KN {

class FOUNDATION_API BufferedStream {
public:
    static constexpr unsigned most_back = 16;  // bytes that skip_back reaches for certain

    BufferedStream() = default;
    BufferedStream(BufferedStream const &) = delete;
    BufferedStream &operator=(BufferedStream const &) = delete;
    virtual ~BufferedStream() = default;

    // The window, and how far it is taken. Equal only where nothing has been read or the stream has ended.
    unsigned char const *window = nullptr;
    unsigned size = 0;
    unsigned position = 0;
    std::uint64_t total = 0;  // bytes taken since the beginning

    // The number of bytes moved; fewer than asked for leave a status that is not 0.
    unsigned read(void *target, unsigned count)
    {
        if (count >= size - position)  // also where the window is taken whole, and has to be refilled
            return read_slow(target, count);
        std::memcpy(target, window + position, count);
        position += count;
        total += count;
        return count;
    }
    // As `read`, for any place of the window.
    unsigned read_slow(void *target, unsigned count);
    // To be called as soon as the window is taken whole: the next one takes its place, an empty one at the end.
    void refill();
    // Over bytes that were taken: `most_back` of them at most, and no more than `total`.
    void skip_back(unsigned count);

    // 0 while every read has got what it asked for.
    int status() const { return error; }

protected:
    struct WINDOW {
        unsigned char const *bytes = nullptr;
        unsigned size = 0;  // 0: the end
    };
    // The bytes that follow those of the last window, which need not stay.
    virtual WINDOW next_window() = 0;

private:
    void remember();

    unsigned char taken[most_back] = {};  // the last bytes of earlier windows, the newest at the end
    WINDOW suspended;                     // goes on once the bytes stepped back over are taken again
    bool is_back = false;                 // the window is the end of `taken`
    int error = 0;
};

// Over memory of the caller's, which outlives the stream, in windows of a size of the caller's choice (at least 1).
class FOUNDATION_API BufferedMemory final : public BufferedStream {
public:
    BufferedMemory(void const *bytes, std::size_t number, unsigned window_size = 65536);

private:
    WINDOW next_window() override;

    unsigned char const *next;
    std::size_t left;
    unsigned most;
};

// Over an open file, from its place on; the file outlives the stream, and its place runs ahead of it.
class FOUNDATION_API BufferedFile final : public BufferedStream {
public:
    explicit BufferedFile(FileIn &file, unsigned window_size = 65536);

private:
    WINDOW next_window() override;

    FileIn &source;
    DynamicArray<unsigned char> held;
};

}  // namespace KN
