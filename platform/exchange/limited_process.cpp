#include "platform/exchange/limited_process.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t longest_output = std::size_t(4) << 20;

void limit(int what, rlim_t most)
{
    rlimit const both = {most, most};
    setrlimit(what, &both);
}

// Runs between fork and exec: calls of the system only.
[[noreturn]] void become(char *const *arguments, int output, int failure, PROCESS_LIMITS const &limits)
{
    setpgid(0, 0);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_CPU, limits.seconds);
#if !defined(HOUSE_SANITIZED)
    limit(RLIMIT_AS, limits.memory);
#endif
    int const nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    execv(arguments[0], arguments);
    int const error = errno;
    [[maybe_unused]] ssize_t const told = write(failure, &error, sizeof error);
    _exit(127);
}

// Until the other end closes, the deadline passes (false) or the output is too long (false).
bool read_all(int pipe, KN::String &text, std::chrono::steady_clock::time_point deadline)
{
    char bytes[4096];
    while (text.size() <= longest_output) {
        auto const left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        pollfd waiting = {pipe, POLLIN, 0};
        if (left <= 0)
            return false;
        int const ready = poll(&waiting, 1, int(left) + 1);
        if (ready < 0 && errno != EINTR)
            return false;
        if (ready <= 0)
            continue;
        ssize_t const got = read(pipe, bytes, sizeof bytes);
        if (got == 0)
            return true;
        if (got > 0)
            text.append(bytes, std::size_t(got));
        else if (errno != EINTR)
            return false;
    }
    return false;
}

}  // namespace

KN::String own_program()
{
    char path[4096];
    ssize_t const length = readlink("/proc/self/exe", path, sizeof path);
    return length > 0 && std::size_t(length) < sizeof path ? KN::String(path, std::size_t(length)) : KN::String();
}

PROCESS_RESULT run_limited(KN_STD::VECTOR<KN::String> const &command, PROCESS_LIMITS const &limits)
{
    PROCESS_RESULT result;
    KN_STD::VECTOR<char *> arguments;
    for (KN::String const &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);

    int output[2], failure[2];  // the second closes without a word when the program has started
    if (pipe2(output, O_CLOEXEC) != 0) {
        result.code = errno;
        return result;
    }
    if (pipe2(failure, O_CLOEXEC) != 0) {
        result.code = errno;
        close(output[0]);
        close(output[1]);
        return result;
    }
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(limits.seconds);
    pid_t const child = fork();
    if (child == 0)
        become(arguments.data(), output[1], failure[1], limits);
    result.code = errno;
    close(output[1]);
    close(failure[1]);

    if (child > 0) {
        ssize_t told;
        do
            told = read(failure[0], &result.code, sizeof result.code);
        while (told < 0 && errno == EINTR);
        bool const in_time = read_all(output[0], result.output, deadline);
        if (!in_time)
            kill(-child, SIGKILL);
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        kill(-child, SIGKILL);  // its children, if it left any
        if (told > 0) {
            result.ending = PROCESS_RESULT::NOT_STARTED;
        } else if (WIFEXITED(status)) {
            result.ending = PROCESS_RESULT::ENDED;
            result.code = WEXITSTATUS(status);
        } else {
            result.code = WTERMSIG(status);
            // Past its processor time a program is sent SIGXCPU, or SIGKILL where both limits are one.
            result.ending = !in_time || result.code == SIGXCPU || result.code == SIGKILL ? PROCESS_RESULT::OUT_OF_TIME
                                                                                         : PROCESS_RESULT::KILLED;
        }
    }
    close(output[0]);
    close(failure[0]);
    return result;
}
