// KN::MemBuffer: a read cursor over bytes in memory that somebody else owns. All reads are bounded by the end of the
// buffer; little-endian values are copied out, so the cursor needs no alignment.
#pragma once

#include <cstdint>
#include <cstring>

namespace KN {

class MemBuffer {
public:
    unsigned char *cursor = nullptr;
    unsigned char *start = nullptr;
    unsigned char *end = nullptr;

    std::size_t left() const { return std::size_t(end - cursor); }

    // Copies up to `size` bytes and moves the cursor behind them; the result is the number copied.
    unsigned read(void *target, unsigned size)
    {
        std::size_t const available = left();
        unsigned const taken = size < available ? size : unsigned(available);
        if (taken != 0) {
            std::memcpy(target, cursor, taken);
            cursor += taken;
        }
        return taken;
    }

    // True if `count` elements of at least `least_size` bytes each can still follow. To be asked before memory is
    // reserved for a count that came from the buffer.
    bool take(std::uint64_t count, std::uint64_t least_size) const { return count <= left() / least_size; }

    // One trivially copyable value; false, with the cursor and `value` as they were, if too few bytes are left.
    template <class T>
    bool read_value(T &value)
    {
        if (left() < sizeof(T))
            return false;
        std::memcpy(&value, cursor, sizeof(T));
        cursor += sizeof(T);
        return true;
    }
};

}  // namespace KN
