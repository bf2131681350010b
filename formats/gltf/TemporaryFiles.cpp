// SPDX-License-Identifier: MIT
// Temporary files of savings, those of today and those that were left.
#include "TemporaryFiles.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace skindesk::gltf {

namespace {

constexpr std::string_view ENDING = ".tmp";
// File systems take 255 bytes; the rest is for what stands around the name.
constexpr std::size_t LONGEST_NAME = 200;

struct TemporaryOf
{
    std::string name;
    pid_t process = 0;
};

// Takes a whole number off the end of a text.
std::optional<long> NumberAtEnd(std::string_view& text)
{
    const std::size_t last = text.find_last_not_of("0123456789");
    const std::size_t start = last == std::string_view::npos ? 0 : last + 1;
    long number = 0;
    const auto result = std::from_chars(text.data() + start, text.data() + text.size(), number);
    if (start == text.size() || result.ec != std::errc{}) {
        return std::nullopt;
    }
    text = text.substr(0, start);
    return number;
}

std::optional<TemporaryOf> ParseTemporary(std::string_view file)
{
    if (!file.starts_with('.') || !file.ends_with(ENDING)) {
        return std::nullopt;
    }
    std::string_view rest = file.substr(1, file.size() - 1 - ENDING.size());
    if (!NumberAtEnd(rest) || !rest.ends_with('-')) {
        return std::nullopt;
    }
    rest.remove_suffix(1);
    const std::optional<long> process = NumberAtEnd(rest);
    if (!process || *process <= 0 || !rest.ends_with('.') || rest.size() < 2) {
        return std::nullopt;
    }
    rest.remove_suffix(1);
    return TemporaryOf{std::string(rest), static_cast<pid_t>(*process)};
}

// Process numbers come again: one that is our own now may have been another's.
bool IsGone(pid_t process) { return process == ::getpid() || (::kill(process, 0) != 0 && errno == ESRCH); }

// A process of another machine or container is not to be seen from here, its mark is.
bool IsMarked(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
    if (fd < 0) {
        return true;
    }
    struct stat info
    {
    };
    const bool isFree = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && ::flock(fd, LOCK_EX | LOCK_NB) == 0;
    ::close(fd);
    return !isFree;
}

} // namespace

std::string_view NameInTemporary(std::string_view name) { return name.substr(0, LONGEST_NAME); }

std::string TemporaryName(std::string_view name, int attempt)
{
    return "." + std::string(NameInTemporary(name)) + "." + std::to_string(::getpid()) + "-" + std::to_string(attempt) +
           std::string(ENDING);
}

void MarkAsBeingWritten(int fd)
{
    // Where a file system knows no marks, the process number has to do.
    static_cast<void>(::flock(fd, LOCK_EX | LOCK_NB));
}

void RemoveAbandonedTemporaries(const std::string& folder, const std::function<bool(const std::string&)>& isWanted)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path where(folder.empty() ? "." : folder);
    for (fs::directory_iterator entry(where, error), end; !error && entry != end; entry.increment(error)) {
        const std::optional<TemporaryOf> found = ParseTemporary(entry->path().filename().string());
        if (found && isWanted(found->name) && IsGone(found->process) && !IsMarked(entry->path().string())) {
            ::unlink(entry->path().c_str());
        }
    }
}

} // namespace skindesk::gltf
