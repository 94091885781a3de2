#include "foundation/file.h"

#include <cerrno>
#include <cstdio>
#include <limits>
#include <utility>

#if defined(_WIN32)
#error "the disk layer of this system is still to be written: everything below main knows files only through it"
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace KN {

namespace {

thread_local FileWatch *current_watch = nullptr;

void tell_watch(String const &disk_name, bool found)
{
    if (current_watch != nullptr)
        current_watch->looked_for(disk_name, found);
}

// The length of the UTF-8 sequence that the units at `place` form when each is taken as a byte; 0 if they form none.
std::size_t byte_sequence(std::u16string_view units, std::size_t place)
{
    char16_t const first = units[place];
    std::size_t const length = first >= 0xc2 && first < 0xe0   ? 2
                               : first >= 0xe0 && first < 0xf0 ? 3
                               : first >= 0xf0 && first < 0xf5 ? 4
                                                               : 0;
    if (length == 0 || place + length > units.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (units[place + i] < 0x80 || units[place + i] > 0xbf)
            return 0;
    return length;
}

// Steps until `size` bytes are there; the result is how many are, and errno says why not all.
template <class STEP>
unsigned read_all(unsigned size, STEP const &step)
{
    unsigned done = 0;
    while (done < size) {
        ssize_t const moved = step(done);
        if (moved < 0 && errno == EINTR)
            continue;
        if (moved == 0)
            errno = EIO;  // the file ends too early
        if (moved <= 0)
            break;
        done += unsigned(moved);
    }
    return done;
}

}  // namespace

String disk_path(UniString const &path)
{
    String name;
    std::size_t taken = 0;  // up to here the name is made
    auto const encode_until = [&](std::size_t place) {
        name += to_utf8(std::u16string_view(path).substr(taken, place - taken));
        taken = place;
    };
    for (std::size_t place = 0; place < path.size();) {
        std::size_t const length = byte_sequence(path, place);
        if (length == 0) {
            ++place;
            continue;
        }
        encode_until(place);
        for (; taken < place + length; ++taken)
            name += char(path[taken]);
        place = taken;
    }
    encode_until(path.size());
    return disk_path(name);
}

String disk_path(String const &path)
{
    String name = path;
    for (char &byte : name)
        if (byte == '\\')
            byte = '/';
    return name;
}

FileWatch *set_thread_file_watch(FileWatch *watch) { return std::exchange(current_watch, watch); }
FileWatch *thread_file_watch() { return current_watch; }

bool exists(String const &path)
{
    String const name = disk_path(path);
    struct stat info;
    bool const found = ::stat(name.c_str(), &info) == 0;
    tell_watch(name, found);
    return found;
}

bool make_directories(String const &folder)
{
    String name = disk_path(folder);
    for (std::size_t slash = name.find('/', 1); slash != String::npos; slash = name.find('/', slash + 1)) {
        name[slash] = 0;
        ::mkdir(name.c_str(), 0777);
        name[slash] = '/';
    }
    ::mkdir(name.c_str(), 0777);
    struct stat found;
    return ::stat(name.c_str(), &found) == 0 && S_ISDIR(found.st_mode);
}

FileIn::~FileIn() { close(); }

bool FileIn::open(UniString const &path, bool) { return open_disk(disk_path(path)); }
bool FileIn::open(String const &path, bool) { return open_disk(disk_path(path)); }

bool FileIn::open_disk(String const &name)
{
    close();
    file_size = 0;
    error = 0;
    // Without O_NONBLOCK a pipe would hold us up before we can see that it is none of ours.
    handle = name.find('\0') == String::npos ? ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK) : -1;
    struct stat found;
    if (handle < 0)
        error = errno != 0 ? errno : EINVAL;
    else if (::fstat(handle, &found) != 0)
        error = errno;
    else if (!S_ISREG(found.st_mode))
        error = S_ISDIR(found.st_mode) ? EISDIR : EINVAL;
    else if (found.st_size > std::numeric_limits<unsigned>::max())
        error = EFBIG;
    else
        file_size = unsigned(found.st_size);
    if (error != 0)
        close();
    tell_watch(name, error == 0);
    return error == 0;
}

unsigned FileIn::read(void *target, unsigned size)
{
    if (handle < 0)
        return 0;
    unsigned const moved =
        read_all(size, [&](unsigned done) { return ::read(handle, static_cast<char *>(target) + done, size - done); });
    if (moved < size)
        error = errno;
    return moved;
}

unsigned FileIn::read_at(unsigned place, void *target, unsigned size) const
{
    return read_all(size, [&](unsigned done) {
        return ::pread(handle, static_cast<char *>(target) + done, size - done, off_t(place) + done);
    });
}

unsigned FileIn::tell() const { return handle < 0 ? 0 : unsigned(::lseek(handle, 0, SEEK_CUR)); }

void FileIn::seek(std::int64_t position)
{
    if (handle < 0 || ::lseek(handle, position, position < 0 ? SEEK_END : SEEK_SET) < 0)
        error = handle < 0 ? EBADF : errno;
}

void FileIn::close()
{
    if (handle >= 0)
        ::close(handle);
    handle = -1;
}

MemFileIn::MemFileIn(void const *source, unsigned size)
    : bytes(static_cast<unsigned char const *>(source)), file_size(size), error(0)
{}

bool MemFileIn::open(UniString const &path, bool buffered) { return open_any(path, buffered); }
bool MemFileIn::open(String const &path, bool buffered) { return open_any(path, buffered); }

template <class PATH>
bool MemFileIn::open_any(PATH const &path, bool buffered)
{
    bytes = nullptr;
    file_size = position = held.count = 0;  // the block stays, for a file that fits into it
    FileIn file;
    if (file.open(path, buffered)) {
        held.reserve(file.size());
        held.count = file.size();
        if (file.read(held.data, held.count) == held.count) {
            bytes = held.data;
            file_size = held.count;
        }
    }
    error = file.status();
    return error == 0;
}

unsigned MemFileIn::read(void *target, unsigned size)
{
    unsigned const left = file_size - position;
    unsigned const moved = size < left ? size : left;
    if (moved != 0)
        std::memcpy(target, bytes + position, moved);
    position += moved;
    if (moved < size)
        error = EIO;
    return moved;
}

void MemFileIn::seek(std::int64_t target)
{
    std::int64_t const place = target < 0 ? file_size + target : target;
    if (place < 0 || place > file_size)
        error = EINVAL;
    else
        position = unsigned(place);
}

FileOut::~FileOut() { close(); }

bool FileOut::open(String const &path, bool append, bool)
{
    close();
    stream = std::fopen(disk_path(path).c_str(), append ? "ab" : "wb");
    error = stream == nullptr ? errno : 0;
    if (error == 0 && current_watch != nullptr)
        current_watch->written(disk_path(path));
    return error == 0;
}

unsigned FileOut::write(void const *source, unsigned size)
{
    if (stream == nullptr)
        return 0;
    std::size_t const moved = std::fwrite(source, 1, size, static_cast<std::FILE *>(stream));
    if (moved != size)
        error = errno;
    return unsigned(moved);
}

unsigned FileOut::tell() const
{
    return stream == nullptr ? 0 : unsigned(std::ftell(static_cast<std::FILE *>(stream)));
}

void FileOut::seek(std::int64_t position)
{
    if (stream == nullptr ||
        std::fseek(static_cast<std::FILE *>(stream), position, position < 0 ? SEEK_END : SEEK_SET) != 0)
        error = errno != 0 ? errno : EBADF;
}

bool FileOut::close()
{
    if (stream != nullptr && std::fclose(static_cast<std::FILE *>(std::exchange(stream, nullptr))) != 0 && error == 0)
        error = errno;
    return error == 0;
}

}  // namespace KN
