// Binary files of the disk. Paths are handed over as the caller has them; only here a backslash becomes a slash on
// systems whose separator is the slash, and only here a text becomes the bytes of a file name: units that form UTF-8
// when taken as bytes are taken as bytes (paths widened byte by byte), all others are encoded as UTF-8.
//
// status() is 0 after success, otherwise the system's error number. Only regular files open. Files of 4 GiB and more
// are refused. An object is used by one thread at a time.
#pragma once

#include "foundation/dynamic_array.h"
#include "foundation/string.h"

namespace KN {

// The name under which the system knows `path`.
FOUNDATION_API String disk_path(UniString const &path);
FOUNDATION_API String disk_path(String const &path);

// True for anything that stands at `path`, folders included.
FOUNDATION_API bool exists(String const &path);
// Creates the folder and those above it; true if it stands afterwards.
FOUNDATION_API bool make_directories(String const &folder);

// Who wants to know which files a thread opens for reading, or asks after, also in vain, and which it writes: a build
// host, to see what a product depends on and what came of it. Names are as the system knows them.
class FileWatch {
public:
    virtual void looked_for(String const &disk_name, bool found) = 0;  // before the first byte is read
    virtual void written(String const &disk_name) = 0;  // a finished file stands, or one opens for writing

protected:
    ~FileWatch() = default;
};

// For the calling thread. Gives the watch that stood before; null takes it away. The watch outlives its installation.
FOUNDATION_API FileWatch *set_thread_file_watch(FileWatch *watch);
FOUNDATION_API FileWatch *thread_file_watch();

class FOUNDATION_API FileIn {
public:
    FileIn() = default;
    ~FileIn();
    FileIn(FileIn const &) = delete;
    FileIn &operator=(FileIn const &) = delete;

    // The second argument asks for buffering on systems that offer the choice; the contents are the same.
    bool open(UniString const &path, bool buffered);
    bool open(String const &path, bool buffered);
    int status() const { return error; }
    unsigned size() const { return file_size; }
    // The number of bytes moved; fewer than asked for leave a status that is not 0.
    unsigned read(void *target, unsigned size);
    // The bytes at `place`, wherever the file stands, and without a trace in status(). Several threads may call it at
    // once.
    unsigned read_at(unsigned place, void *target, unsigned size) const;
    unsigned tell() const;
    void seek(std::int64_t position);  // a negative position counts from the end
    void close();

private:
    bool open_disk(String const &name);

    int handle = -1;
    int error = -1;
    unsigned file_size = 0;
};

// The same calls over a file that is held in memory, or over the caller's bytes (which are then not copied).
class FOUNDATION_API MemFileIn {
public:
    MemFileIn() = default;
    MemFileIn(void const *bytes, unsigned size);
    MemFileIn(MemFileIn const &) = delete;
    MemFileIn &operator=(MemFileIn const &) = delete;

    bool open(UniString const &path, bool buffered);
    bool open(String const &path, bool buffered);
    int status() const { return error; }
    unsigned size() const { return file_size; }
    unsigned read(void *target, unsigned size);
    unsigned tell() const { return position; }
    void seek(std::int64_t target);
    // The whole file, until it is opened anew.
    unsigned char const *data() const { return bytes; }

private:
    template <class PATH>
    bool open_any(PATH const &path, bool buffered);

    DynamicArray<unsigned char> held;
    unsigned char const *bytes = nullptr;
    unsigned file_size = 0;
    unsigned position = 0;
    int error = -1;
};

class FOUNDATION_API FileOut {
public:
    FileOut() = default;
    ~FileOut();
    FileOut(FileOut const &) = delete;
    FileOut &operator=(FileOut const &) = delete;

    // Creates the file, or truncates it unless `append`. `binary` false turns "\n" into the system's line end.
    bool open(String const &path, bool append, bool binary);
    int status() const { return error; }
    unsigned write(void const *source, unsigned size);  // the number of bytes moved
    unsigned tell() const;
    void seek(std::int64_t position);  // a negative position counts from the end
    // Hands buffered bytes to the system and closes; status() tells whether all of it worked.
    bool close();

private:
    void *stream = nullptr;
    int error = -1;
};

}  // namespace KN
