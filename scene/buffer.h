// VEX2_READ_BUFFER: a whole scene file in memory and the cursor that reads it. It also keeps what bounds a load: the
// chain of files being loaded, the memory that may still be used, and the first fault.
#pragma once

#include "foundation/mem_buffer.h"
#include "foundation/string.h"
#include "scene/api.h"

#include <memory>

namespace VEX2_LOADER {

struct VEX2_LOAD_SESSION;

class SCENE_API VEX2_READ_BUFFER : public KN::MemBuffer {
public:
    // Reads the file. A file that does not open, is empty or cannot be read in full leaves an empty buffer: its cursor
    // is not below its end.
    explicit VEX2_READ_BUFFER(KN::UniString const &path);
    // The file of a reference: shares the session of the load that found it.
    VEX2_READ_BUFFER(KN::UniString const &path, VEX2_READ_BUFFER &outer);
    // The caller's bytes, which outlive the buffer; references resolve against `path`.
    VEX2_READ_BUFFER(KN::UniString const &path, void const *bytes, unsigned size);
    ~VEX2_READ_BUFFER();
    VEX2_READ_BUFFER(VEX2_READ_BUFFER const &) = delete;
    VEX2_READ_BUFFER &operator=(VEX2_READ_BUFFER const &) = delete;

    KN::UniString path;
    KN::String fault;  // why the load failed, as one line with the path in front; empty if it has not

    std::size_t offset() const { return std::size_t(cursor - start); }

    // Records the first fault only; always false, so that readers can return it.
    bool fail(KN::String const &what);
    // Counts memory that the load is about to use; false, with a fault, if the load would use more than its input
    // allows.
    bool charge(std::uint64_t bytes);
    // One level deeper in nested maps; false, with a fault, at the deepest level. Each true is taken back by leave_map.
    bool enter_map();
    void leave_map() { --map_depth; }

    // Of one load and of all loads of references within it.
    std::shared_ptr<VEX2_LOAD_SESSION> session;
    VEX2_READ_BUFFER *outer = nullptr;  // whose load opened this buffer; null for the outermost

private:
    void read_file();

    unsigned char *block = nullptr;
    unsigned map_depth = 0;
};

}  // namespace VEX2_LOADER
