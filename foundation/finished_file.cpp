#include "foundation/finished_file.h"

#include "foundation/file.h"

#include <atomic>
#include <cerrno>
#include <cstring>

#if defined(_WIN32)
#include <process.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace KN {

namespace {

constexpr std::string_view unfinished_suffix = ".unfinished";

// The one place that knows how this system makes a new file, and how it puts one in another's place.
#if defined(_WIN32)
std::FILE *create_new(String const &path) { return std::fopen(path.c_str(), "wbx"); }
bool replace(String const &from, String const &to)
{
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
}
int process_number() { return _getpid(); }
void reserve(std::FILE *, std::uint64_t) {}
#else
std::FILE *create_new(String const &path)
{
    int const handle = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    return handle < 0 ? nullptr : ::fdopen(handle, "wb");
}
bool replace(String const &from, String const &to) { return std::rename(from.c_str(), to.c_str()) == 0; }
int process_number() { return ::getpid(); }
void reserve(std::FILE *stream, std::uint64_t size)
{
#ifdef __linux__
    // A hint: without room the writing will tell. The file's size stays as it is.
    static_cast<void>(::fallocate(::fileno(stream), FALLOC_FL_KEEP_SIZE, 0, off_t(size)));
#endif
}
#endif

}  // namespace

FinishedFile::FinishedFile(String target) : path(disk_path(target))
{
    static std::atomic<unsigned> number = 0;
    temporary =
        path + "." + std::to_string(process_number()) + "-" + std::to_string(number++) + std::string(unfinished_suffix);
    stream = create_new(temporary);
    if (stream == nullptr)
        fail("cannot be created");
}

FinishedFile::~FinishedFile()
{
    if (stream != nullptr) {
        std::fclose(stream);
        std::remove(temporary.c_str());
    }
}

bool FinishedFile::fail(char const *what)
{
    if (fault.empty())
        fault = printable(path) + ": " + what + ": " + std::strerror(errno);
    return false;
}

void FinishedFile::expect(std::uint64_t size)
{
    if (stream != nullptr)
        reserve(stream, size);
}

bool FinishedFile::write(void const *bytes, std::size_t size)
{
    if (!fault.empty())
        return false;
    return std::fwrite(bytes, 1, size, stream) == size || fail("cannot be written");
}

bool FinishedFile::commit()
{
    if (stream == nullptr)
        return false;
    bool good = fault.empty();
    if (std::fclose(std::exchange(stream, nullptr)) != 0)
        good = fail("cannot be written");
    if (good && !replace(temporary, path))
        good = fail("cannot be put in place");
    if (!good)
        std::remove(temporary.c_str());
    else if (FileWatch *const watch = thread_file_watch())
        watch->written(path);
    return good;
}

bool FinishedFile::is_unfinished(std::string_view name)
{
    // NAME.PROCESS-NUMBER.unfinished
    if (!name.ends_with(unfinished_suffix))
        return false;
    name.remove_suffix(unfinished_suffix.size());
    std::size_t const dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return false;
    std::string_view const numbers = name.substr(dot + 1);
    std::size_t const dash = numbers.find('-');
    return dash != std::string_view::npos && dash != 0 && dash + 1 != numbers.size() &&
           numbers.find_first_not_of("0123456789", dash + 1) == std::string_view::npos &&
           numbers.substr(0, dash).find_first_not_of("0123456789") == std::string_view::npos;
}

bool write_finished_file(String const &path, std::string_view bytes, String &error)
{
    FinishedFile file(path);
    if (file.write(bytes) && file.commit())
        return true;
    error = file.error();
    return false;
}

}  // namespace KN
