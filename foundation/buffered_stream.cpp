#include "foundation/buffered_stream.h"

#include <algorithm>
#include <cassert>
#include <cerrno>

namespace KN {

unsigned BufferedStream::read_slow(void *target, unsigned count)
{
    unsigned char *place = static_cast<unsigned char *>(target);
    unsigned moved = 0;
    while (moved < count) {
        if (position == size)
            refill();
        unsigned const piece = std::min(count - moved, size - position);
        if (piece == 0) {
            error = ENODATA;
            break;
        }
        std::memcpy(place + moved, window + position, piece);
        moved += piece;
        position += piece;
        total += piece;
    }
    if (position == size && size != 0)
        refill();
    return moved;
}

void BufferedStream::refill()
{
    WINDOW next = suspended;
    if (!is_back) {
        remember();
        next = next_window();
    }
    is_back = false;
    suspended = {};
    window = next.bytes;
    size = next.size;
    position = 0;
}

void BufferedStream::remember()
{
    unsigned const fresh = std::min(size, most_back);
    if (fresh == 0)
        return;
    std::memmove(taken, taken + fresh, most_back - fresh);
    std::memcpy(taken + most_back - fresh, window + size - fresh, fresh);
}

void BufferedStream::skip_back(unsigned count)
{
    assert(count <= total && (count <= position || count - position <= most_back));
    total -= count;
    if (count <= position) {
        position -= count;
        return;
    }
    // Both the end of `taken` before a fresh window, and a place within `taken` itself.
    if (!is_back) {
        suspended = {window, size};
        window = taken + most_back;
        is_back = true;
        count -= position;
    } else {
        window += position;
    }
    window -= count;
    size = unsigned(taken + most_back - window);
    position = 0;
}

BufferedMemory::BufferedMemory(void const *bytes, std::size_t number, unsigned window_size)
    : next(static_cast<unsigned char const *>(bytes)), left(number), most(window_size)
{}

BufferedStream::WINDOW BufferedMemory::next_window()
{
    WINDOW const made{next, unsigned(std::min<std::size_t>(left, most))};
    next += made.size;
    left -= made.size;
    return made;
}

BufferedFile::BufferedFile(FileIn &file, unsigned window_size) : source(file) { held.resize(window_size); }

BufferedStream::WINDOW BufferedFile::next_window()
{
    unsigned const rest = source.status() == 0 ? source.size() - std::min(source.size(), source.tell()) : 0;
    return {held.data, source.read(held.data, std::min(rest, held.count))};
}

}  // namespace KN
