// SPDX-License-Identifier: MIT
// A child process for work that may break down.
#include "ChildProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace skindesk::assimp {

namespace {

// What stands before and behind an answer, so that half of one is not taken for a whole.
constexpr std::array<std::uint8_t, 8> WHOLE{'s', 'k', 'i', 'n', 'd', 'e', 's', 'k'};

bool WriteAll(int fd, const std::uint8_t* bytes, std::size_t size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, bytes, size);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return false;
        }
        bytes += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

// How much address space this process has; 0 when nobody says.
std::uint64_t AddressSpace()
{
    std::ifstream file("/proc/self/statm");
    std::uint64_t pages = 0;
    file >> pages;
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

void Limit(int what, std::uint64_t most, std::uint64_t grace = 0)
{
    const rlimit limit{static_cast<rlim_t>(most), static_cast<rlim_t>(most + grace)};
    static_cast<void>(::setrlimit(static_cast<__rlimit_resource>(what), &limit));
}

// A breakdown here is expected: no dump of it, and no handler of the parent's that would report it as the parent's own.
void SettleIn(const ChildLimits& limits)
{
    for (const int signal : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGXCPU, SIGTERM, SIGINT, SIGPIPE}) {
        std::signal(signal, SIG_DFL);
    }
    Limit(RLIMIT_CORE, 0);
    // Without the second of grace the system kills without saying why.
    Limit(RLIMIT_CPU, limits.processorSeconds, 1);
    if (const std::uint64_t now = AddressSpace(); now > 0) {
        Limit(RLIMIT_AS, now + limits.moreMemory);
    }
}

[[noreturn]] void BeTheChild(const std::function<std::vector<std::uint8_t>()>& work, const ChildLimits& limits, int fd)
{
    // Not exit(): what this process wants done at its end is the parent's to do.
    try {
        SettleIn(limits);
        const std::vector<std::uint8_t> answer = work();
        const bool isWritten = WriteAll(fd, WHOLE.data(), WHOLE.size()) && WriteAll(fd, answer.data(), answer.size()) &&
                               WriteAll(fd, WHOLE.data(), WHOLE.size());
        ::_exit(isWritten ? 0 : 1);
    } catch (...) {
        ::_exit(1);
    }
}

// Reads to the end; false when that took too long.
bool ReadAll(int fd, unsigned seconds, std::vector<std::uint8_t>& into)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    std::vector<std::uint8_t> part(std::size_t{1} << 16);
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd ready{fd, POLLIN, 0};
        const int found = left > 0 ? ::poll(&ready, 1, static_cast<int>(left)) : 0;
        if (found == 0) {
            return false;
        }
        const ssize_t n = found < 0 ? -1 : ::read(fd, part.data(), part.size());
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return true;
        }
        into.insert(into.end(), part.begin(), part.begin() + n);
    }
}

std::string HowItEnded(pid_t child)
{
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return "ended without an answer";
        }
    }
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        return signal == SIGXCPU ? "took too long" : std::string("broke down: ") + ::strsignal(signal);
    }
    return "ended without an answer";
}

bool TakeWhole(std::vector<std::uint8_t>& bytes)
{
    const auto mark = static_cast<std::ptrdiff_t>(WHOLE.size());
    if (bytes.size() < 2 * WHOLE.size() || !std::equal(WHOLE.begin(), WHOLE.end(), bytes.begin()) ||
        !std::equal(WHOLE.begin(), WHOLE.end(), bytes.end() - mark)) {
        return false;
    }
    bytes.erase(bytes.end() - mark, bytes.end());
    bytes.erase(bytes.begin(), bytes.begin() + mark);
    return true;
}

} // namespace

ChildResult RunInChild(const std::function<std::vector<std::uint8_t>()>& work, const ChildLimits& limits)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return {{}, "could not be started: " + std::generic_category().message(errno)};
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        BeTheChild(work, limits, ends[1]);
    }
    const int whyNot = errno;
    ::close(ends[1]);
    if (child < 0) {
        ::close(ends[0]);
        return {{}, "could not be started: " + std::generic_category().message(whyNot)};
    }
    ChildResult result;
    const bool isInTime = ReadAll(ends[0], limits.waitSeconds, result.bytes);
    ::close(ends[0]);
    if (!isInTime) {
        ::kill(child, SIGKILL);
    }
    const std::string ended = HowItEnded(child);
    if (!isInTime || !TakeWhole(result.bytes)) {
        result.bytes.clear();
        result.failure = isInTime ? ended : "took too long";
    }
    return result;
}

} // namespace skindesk::assimp
