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
    // Opens the file; a path that cannot be opened shows in the results of the writes. `chunked`: what is written
    // outside an open chunk is dropped and counts as failed.
    VEX2_CHUNK_WRITER(KN::UniString const &path, bool append, bool chunked);
    ~VEX2_CHUNK_WRITER();
    VEX2_CHUNK_WRITER(VEX2_CHUNK_WRITER const &) = delete;
    VEX2_CHUNK_WRITER &operator=(VEX2_CHUNK_WRITER const &) = delete;

    // The chunk's size comes to stand before its bytes when it ends. False if a chunk is open, or none.
    bool begin_chunk();
    bool end_chunk();

    // True if the bytes were taken. A file cannot grow beyond 2 GiB.
    bool write(void const *bytes, std::size_t size);
    // A text of more than 65,535 units cannot be stored and counts as failed.
    bool write_string(KN::UniString const &text);

    // The framing of the file itself goes around the rule of open chunks.
    std::uint32_t position() const;
    bool write_unframed(void const *bytes, std::size_t size);
    // Overwrites four bytes that were written before.
    bool overwrite(std::uint32_t at, std::uint32_t value);
    // Hands everything to the system and closes; false if any byte of the file's life was lost.
    bool close();

    std::uint32_t in_chunk = 0;
    std::uint32_t chunk_start = 0;
    bool chunked;
    std::unique_ptr<KN::FileOut> file;
    KN::UniString path;

private:
    bool flush();

    KN::DynamicArray<unsigned char> pending;  // the last bytes, not yet in the file
    std::uint32_t flushed = 0;                // the file position behind which `pending` belongs
    bool good = false;
};

}  // namespace VEX2_LOADER
