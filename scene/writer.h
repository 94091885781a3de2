// VEX2_CHUNK_WRITER: the file that a scene is written to, chunk by chunk. Bytes are collected and handed to the file in
// large pieces.
#pragma once

#include "foundation/file.h"
#include "scene/api.h"

#include <cstdint>
#include <memory>

namespace VEX2_LOADER {

class SCENE_API VEX2_CHUNK_WRITER {
public:
    // Opens the file; one that cannot be opened shows in the results of the writes. `chunk_rule`: what is written
    // outside an open chunk is dropped and counts as failed.
    VEX2_CHUNK_WRITER(KN::UniString const &path, bool append, bool chunk_rule);
    ~VEX2_CHUNK_WRITER();
    VEX2_CHUNK_WRITER(VEX2_CHUNK_WRITER const &) = delete;
    VEX2_CHUNK_WRITER &operator=(VEX2_CHUNK_WRITER const &) = delete;

    std::uint32_t in_chunk = 0;     // 1 while a chunk is open
    std::uint32_t chunk_start = 0;  // where the open chunk's size stands in the file
    bool chunked;
    std::unique_ptr<KN::FileOut> file;
    KN::UniString path;
    bool write_references = true;  // false: a reference is written as its path alone, its file is left alone

    // The chunk's size comes to stand before its bytes when it ends. False if a chunk is open already, or none is.
    bool begin_chunk();
    bool end_chunk();

    // True if the bytes were taken. A file does not grow beyond 2 GiB.
    bool write(void const *bytes, std::size_t size) { return (in_chunk || !chunked) && write_unframed(bytes, size); }
    // A text of more than 65,535 units cannot be stored and counts as failed.
    bool write_string(KN::UniString const &text);

    // The framing of the file itself goes around the rule of open chunks.
    bool write_unframed(void const *bytes, std::size_t size)
    {
        if (size > std::size_t(room - next))
            return write_large(bytes, size);
        std::memcpy(next, bytes, size);
        next += size;
        return good;
    }
    bool overwrite(std::uint32_t at, std::uint32_t value);  // four bytes that were written before
    std::uint32_t position() const { return flushed + std::uint32_t(next - pending.get()); }

    // Hands everything to the system and closes; false if any byte was lost since the file was opened.
    bool close();

private:
    bool write_large(void const *bytes, std::size_t size);
    bool flush();

    std::unique_ptr<unsigned char[]> pending;  // the last bytes, not yet in the file
    unsigned char *next;
    unsigned char *room;        // the end of `pending`
    std::uint32_t flushed = 0;  // the file position at which `pending` belongs
    bool good;
};

}  // namespace VEX2_LOADER
