// VEX2_READ_BUFFER: a whole scene file in memory and the cursor that reads it. It also keeps what bounds a load: the
// chain of files being loaded, the memory that may still be used, and the first fault.
#pragma once

#include "foundation/containers.h"
#include "foundation/mem_buffer.h"
#include "foundation/string.h"
#include "scene/api.h"

namespace VEX2_LOADER {

// What the load of a scene and the loads of its references share.
struct VEX2_LOAD_SESSION {
    KN_STD::SET<KN::String> files;  // every file read, once
    std::uint64_t input = 0;        // their bytes
    std::uint64_t used = 0;         // memory that the loads have charged
    unsigned references = 0;        // met so far, their files present or not
    unsigned referenced_loads = 0;
    KN::String first_fault;  // of the file that failed first: the innermost
};

class SCENE_API VEX2_READ_BUFFER : public KN::MemBuffer {
public:
    // Reads the file. A file that does not open, is empty or cannot be read in full leaves an empty buffer: its cursor
    // is not below its end.
    explicit VEX2_READ_BUFFER(KN::UniString const &path);
    // The file of a reference, as a part of the load that met it.
    VEX2_READ_BUFFER(KN::UniString const &path, VEX2_READ_BUFFER &outer);
    // The caller's bytes, which outlive the buffer; references resolve against `path`.
    VEX2_READ_BUFFER(KN::UniString const &path, void const *bytes, unsigned size);
    ~VEX2_READ_BUFFER();
    VEX2_READ_BUFFER(VEX2_READ_BUFFER const &) = delete;
    VEX2_READ_BUFFER &operator=(VEX2_READ_BUFFER const &) = delete;

    KN::UniString path;
    KN::String fault;                   // why the load failed, as one line with the path in front; else empty
    VEX2_READ_BUFFER *outer = nullptr;  // whose load opened this buffer; null for the outermost

    std::size_t offset() const { return std::size_t(cursor - start); }
    VEX2_LOAD_SESSION &session() { return *load; }

    // Takes note of the first fault; always false, so that readers can return it. fail_here adds the byte.
    bool fail(KN::String const &what);
    bool fail_here(KN::String const &what);
    // A reader on the way out of a fault adds where it stood, the innermost first: a field's name, or "[n]". The chunk
    // comes last.
    void add_place(KN::String const &where);
    void add_index(std::uint32_t index);
    void add_chunk(KN::String const &where);
    // The fault with the places in front.
    KN::String fault_text() const;

    // fail_here() for `wanted` bytes that are not there.
    bool fail_short(std::uint64_t wanted);
    // fail_here() for `count` elements for which there are too few.
    bool fail_count(std::uint32_t count);
    // Counts memory that the load is about to use beyond the bytes it copies; false, with a fault, if that is more than
    // the input allows.
    bool charge(std::uint64_t bytes)
    {
        load->used += bytes;
        return load->used <= memory_limit() || fail_charge();
    }

    unsigned map_depth = 0;  // of the map being read within other maps

private:
    void read_file();
    // With the file itself and what is copied out of it as it stands, a load stays below 64 MiB + 32 times its input.
    std::uint64_t memory_limit() const { return (std::uint64_t(48) << 20) + 26 * load->input; }
    bool fail_charge();

    unsigned char *block = nullptr;
    VEX2_LOAD_SESSION own_load;
    VEX2_LOAD_SESSION *load = &own_load;
    KN::String cause;
    KN::String place;
    KN::String chunk;
};

}  // namespace VEX2_LOADER
