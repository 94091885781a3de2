// What the host knows of a file's state without and with a look at its contents.
#pragma once

#include "platform/build_host/build_record.h"

#include <mutex>
#include <unordered_map>

// Size and time of a regular file; absent if there is none, folders included. `hash` stays 0. Backslashes are turned.
BUILD_HOST_API FILE_STAMP stamp_of(QString const &physical);

// The state of a file that the build has just written, for RECORDED_TARGET::flags.
std::uint64_t written_state(QString const &physical);

// True if the file was written, or put in its place, at `moment` or later. Moments come from `now`, which is early by
// more than the steps of a file system's clock.
std::int64_t now();
bool was_written_since(QString const &physical, std::int64_t moment);

// Hashes of contents, each file read once a process as long as size and time stay. Any thread.
class CONTENT_HASHES {
public:
    // 0 if the file cannot be read.
    std::uint64_t of(std::uint64_t path, QString const &physical, FILE_STAMP const &stamp);
    // Makes a hash of earlier known.
    void learn(std::uint64_t path, FILE_STAMP const &stamp);
    std::uint64_t files_read() const { return number_read; }

private:
    std::mutex lock;
    std::unordered_map<std::uint64_t, FILE_STAMP> known;
    std::uint64_t number_read = 0;
};
