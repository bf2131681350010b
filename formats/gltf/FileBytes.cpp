// SPDX-License-Identifier: MIT
// Whole files in and out of memory.
#include "FileBytes.h"

#include "TemporaryFiles.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace skindesk::gltf {

namespace {

std::string Reason(int error) { return std::generic_category().message(error); }

[[noreturn]] void Fail(const std::string& named, const std::string& what, int error)
{
    throw FileError(named, "", what + ": " + Reason(error));
}

// An open file descriptor; closing is checked where it matters.
class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    [[nodiscard]] int Number() const { return m_fd; }
    [[nodiscard]] bool IsOpen() const { return m_fd >= 0; }
    [[nodiscard]] int Close()
    {
        const int fd = m_fd;
        m_fd = -1;
        return ::close(fd);
    }

private:
    int m_fd;
};

std::size_t ReadFully(int fd, std::uint8_t* into, std::size_t size, const std::string& named)
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n = ::read(fd, into + done, size - done);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            Fail(named, "cannot be read", errno);
        }
        if (n == 0) {
            break;
        }
        done += static_cast<std::size_t>(n);
    }
    return done;
}

bool WriteFully(int fd, ByteSpan bytes)
{
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            if (n == 0) {
                errno = ENOSPC;
            }
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(n));
    }
    return true;
}

std::string FolderOf(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

void SyncFolder(const std::string& path)
{
    const std::string folder = FolderOf(path);
    const Descriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems cannot sync a folder and say so with EINVAL; there the rename is all that can be had.
    if (!fd.IsOpen() || (::fsync(fd.Number()) != 0 && errno != EINVAL)) {
        Fail(path, "the folder cannot be synced", errno);
    }
}

// A new file beside `path` under a name that nothing has.
int OpenTemporary(const std::string& path, mode_t mode, std::string& name)
{
    const std::filesystem::path target(path);
    for (int attempt = 0; attempt < 100; ++attempt) {
        name = (target.parent_path() / TemporaryName(target.filename().string(), attempt)).string();
        const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        if (fd >= 0) {
            MarkAsBeingWritten(fd);
            return fd;
        }
        if (errno != EEXIST) {
            return fd;
        }
    }
    return -1;
}

// Why a finished temporary file could not be written or put in place.
struct Failure
{
    const char* what;
    int error;
};

Failure FillAndSync(Descriptor& fd, std::span<const ByteSpan> pieces)
{
    for (const ByteSpan piece : pieces) {
        if (!WriteFully(fd.Number(), piece)) {
            return {"cannot be written", errno};
        }
    }
    if (::fsync(fd.Number()) != 0) {
        return {"cannot be synced", errno};
    }
    if (fd.Close() != 0) {
        return {"cannot be closed", errno};
    }
    return {nullptr, 0};
}

} // namespace

ByteBlock::ByteBlock(ByteSpan from) : ByteBlock(from.size())
{
    if (!from.empty()) {
        std::memcpy(m_bytes.get(), from.data(), from.size());
    }
}

ByteBlock ReadWholeFile(const std::string& path, const std::string& named)
{
    // Without O_NONBLOCK, opening a pipe waits for a writer that may never come.
    Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!fd.IsOpen()) {
        Fail(named, "cannot be opened", errno);
    }
    struct stat info
    {
    };
    if (::fstat(fd.Number(), &info) != 0) {
        Fail(named, "cannot be read", errno);
    }
    if (!S_ISREG(info.st_mode)) {
        throw FileError(named, "", S_ISDIR(info.st_mode) ? "is a folder, not a file" : "is not an ordinary file");
    }
    ByteBlock block;
    try {
        block = ByteBlock(static_cast<std::size_t>(info.st_size));
    } catch (const std::bad_alloc&) {
        throw FileError(named, "", "has " + std::to_string(info.st_size) + " bytes, more than there is memory");
    }
    const std::size_t got = ReadFully(fd.Number(), block.Data(), block.Size(), named);
    if (got != block.Size()) {
        throw FileError(named, "byte " + std::to_string(got),
                        "the file was cut while it was read, " + std::to_string(block.Size()) + " bytes were there");
    }
    return block;
}

void ContentHash::AddWord(std::uint64_t word)
{
    m_state = (m_state ^ word) * 0x9FB21C651E98DF25u;
    m_state ^= m_state >> 32;
}

void ContentHash::Add(ByteSpan bytes)
{
    std::size_t i = 0;
    while (i < bytes.size() && m_length % 8 != 0) {
        m_pending |= static_cast<std::uint64_t>(bytes[i++]) << (8 * (m_length % 8));
        if (++m_length % 8 == 0) {
            AddWord(m_pending);
            m_pending = 0;
        }
    }
    for (; i + 8 <= bytes.size(); i += 8, m_length += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + i, 8);
        AddWord(word);
    }
    for (; i < bytes.size(); ++i, ++m_length) {
        m_pending |= static_cast<std::uint64_t>(bytes[i]) << (8 * (m_length % 8));
    }
}

std::uint64_t ContentHash::Value() const
{
    ContentHash last = *this;
    last.AddWord(m_pending);
    last.AddWord(m_length);
    return last.m_state;
}

std::uint64_t HashOf(ByteSpan bytes)
{
    ContentHash hash;
    hash.Add(bytes);
    return hash.Value();
}

std::string HexOf(std::uint64_t value)
{
    std::string text(16, '0');
    for (std::size_t i = 0; i < 16; ++i) {
        text[15 - i] = "0123456789abcdef"[(value >> (4 * i)) & 15u];
    }
    return text;
}

FileStamp QuickStamp(const std::string& path)
{
    struct stat info
    {
    };
    FileStamp stamp;
    if (::stat(path.c_str(), &info) == 0) {
        stamp.size = static_cast<std::uint64_t>(info.st_size);
        stamp.modifiedNanoseconds =
            static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1'000'000'000 + info.st_mtim.tv_nsec;
    }
    return stamp;
}

bool HasContent(const std::string& path, ByteSpan content)
{
    struct stat info
    {
    };
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) ||
        static_cast<std::uint64_t>(info.st_size) != content.size()) {
        return false;
    }
    const ByteBlock there = ReadWholeFile(path, path);
    return there.Size() == content.size() &&
           (content.empty() || std::memcmp(there.Span().data(), content.data(), content.size()) == 0);
}

std::string FollowLinks(const std::string& path)
{
    std::filesystem::path at(path);
    for (int hops = 0; hops < 40; ++hops) {
        std::error_code error;
        if (!std::filesystem::is_symlink(at, error)) {
            return at.string();
        }
        const std::filesystem::path target = std::filesystem::read_symlink(at, error);
        if (error) {
            Fail(path, "the symbolic link cannot be followed", error.value());
        }
        at = target.is_absolute() ? target : at.parent_path() / target;
    }
    throw FileError(path, "", "the symbolic links lead in a circle");
}

void ReplaceFile(const std::string& path, std::span<const ByteSpan> pieces)
{
    const std::string target = FollowLinks(path);
    struct stat old
    {
    };
    const bool exists = ::stat(target.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) {
        throw FileError(path, "", S_ISDIR(old.st_mode) ? "is a folder, not a file" : "is not an ordinary file");
    }
    if (exists && ::access(target.c_str(), W_OK) != 0) {
        // Renaming would get around the protection that someone gave this file on purpose.
        Fail(path, "is write-protected", errno);
    }
    std::string temporary;
    Descriptor fd(OpenTemporary(target, 0666, temporary));
    if (!fd.IsOpen()) {
        Fail(path, "cannot be written in this folder", errno);
    }
    if (exists) {
        // Who may read the file stays as it was; where that cannot be set, saving still matters more.
        static_cast<void>(::fchmod(fd.Number(), old.st_mode & 07777));
    }
    Failure failure = FillAndSync(fd, pieces);
    if (failure.what == nullptr && ::rename(temporary.c_str(), target.c_str()) != 0) {
        failure = {"cannot be replaced", errno};
    }
    if (failure.what != nullptr) {
        ::unlink(temporary.c_str());
        Fail(path, failure.what, failure.error);
    }
    SyncFolder(target);
}

} // namespace skindesk::gltf
