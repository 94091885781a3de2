#include "platform/build_host/file_stamp.h"

#include "platform/build_host/disk_name.h"
#include "platform/build_host/mix.h"

#include <QtCore/QFile>

#include <xxhash.h>

#include <algorithm>
#include <memory>

#include <sys/stat.h>
#include <time.h>

namespace {

constexpr std::int64_t second = 1'000'000'000;     // ns
constexpr std::int64_t clock_slack = second / 20;  // file times may lag behind the clock by a tick of the kernel

std::int64_t nanoseconds(timespec const &time) { return time.tv_sec * second + time.tv_nsec; }

bool read_status(QString const &physical, struct stat &status)
{
    return ::stat(disk_name(physical).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// 0 stands for "unknown", so no content has it.
std::uint64_t hash_contents(QString const &physical)
{
    QFile file(QString::fromStdString(disk_name(physical)));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return 0;
    struct FREE {
        void operator()(XXH3_state_t *state) const { XXH3_freeState(state); }
    };
    std::unique_ptr<XXH3_state_t, FREE> const state(XXH3_createState());
    XXH3_64bits_reset(state.get());
    QByteArray block(1 << 18, Qt::Uninitialized);
    qint64 size;
    while ((size = file.read(block.data(), block.size())) > 0)
        XXH3_64bits_update(state.get(), block.constData(), std::size_t(size));
    return size < 0 ? 0 : std::max<std::uint64_t>(XXH3_64bits_digest(state.get()), 1);
}

}  // namespace

FILE_STAMP stamp_of(QString const &physical)
{
    struct stat status;
    if (!read_status(physical, status))
        return {};
    return {status.st_size, nanoseconds(status.st_mtim), 0};
}

std::int64_t now()
{
    timespec time;
    ::clock_gettime(CLOCK_REALTIME, &time);
    return nanoseconds(time) - clock_slack;
}

std::uint64_t written_state(QString const &physical)
{
    FILE_STAMP const stamp = stamp_of(physical);
    return mix(mix(1, std::uint64_t(stamp.size)), std::uint64_t(stamp.time)) & ~RECORDED_TARGET::all_flags;
}

bool was_written_since(QString const &physical, std::int64_t moment)
{
    struct stat status;
    return read_status(physical, status) &&
           std::max(nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)) >= moment;
}

std::uint64_t CONTENT_HASHES::of(std::uint64_t path, QString const &physical, FILE_STAMP const &stamp)
{
    {
        std::lock_guard const guard(lock);
        auto const found = known.find(path);
        if (found != known.end() && found->second.size == stamp.size && found->second.time == stamp.time)
            return found->second.hash;
    }
    FILE_STAMP read = stamp;
    read.hash = hash_contents(physical);
    std::lock_guard const guard(lock);
    ++number_read;
    known[path] = read;
    return read.hash;
}

void CONTENT_HASHES::learn(std::uint64_t path, FILE_STAMP const &stamp)
{
    std::lock_guard const guard(lock);
    if (stamp.hash != 0)
        known.emplace(path, stamp);
}
