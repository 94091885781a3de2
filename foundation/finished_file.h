// KN::FinishedFile: how every file of ours comes to stand. Bytes go into an unfinished file in the same folder; commit
// closes it and renames it into place, so that a reader sees the old file or the whole new one, never a part. Without
// commit the unfinished file is removed. Bytes are handed to the system, not forced onto the disk.
#pragma once

#include "foundation/string.h"

#include <cstdint>
#include <cstdio>

namespace KN {

class FOUNDATION_API FinishedFile {
public:
    // `path` as the caller has it (file.h); its folder must stand.
    explicit FinishedFile(String path);
    ~FinishedFile();
    FinishedFile(FinishedFile const &) = delete;
    FinishedFile &operator=(FinishedFile const &) = delete;

    // False once anything has failed; error() then says what, with the path.
    bool write(void const *bytes, std::size_t size);
    bool write(std::string_view text) { return write(text.data(), text.size()); }
    // The file is going to have so many bytes: where the system can, it looks for room for all of them at once.
    void expect(std::uint64_t size);
    bool commit();
    String const &error() const { return fault; }

    // The unfinished file, for a library that insists on writing by name. It exists from the constructor on.
    String const &unfinished_path() const { return temporary; }

    // True for file names that only an unfinished file bears: left behind by a killed process, free to remove.
    static bool is_unfinished(std::string_view name);

private:
    bool fail(char const *what);

    String path;
    String temporary;
    String fault;
    std::FILE *stream = nullptr;
};

// The whole of `bytes` at `path`, or nothing changed and a line in `error`.
FOUNDATION_API bool write_finished_file(String const &path, std::string_view bytes, String &error);

}  // namespace KN
