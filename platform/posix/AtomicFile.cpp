#include "platform/posix/AtomicFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace tavrel::AtomicFile {
namespace {

constexpr mode_t ownerFolder = 0700;
constexpr mode_t ownerFile = 0600;
constexpr std::string_view temporarySuffix = ".new-";

/// Repeats a system call that a signal interrupted.
template <class Call>
auto retryOnInterrupt(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

std::chrono::nanoseconds sinceEpoch(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

bool writeAll(int file, std::string_view contents) {
    while (!contents.empty()) {
        const ssize_t written =
            retryOnInterrupt([&] { return ::write(file, contents.data(), contents.size()); });
        if (written < 0) {
            return false;
        }
        contents.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

/// Flushes a change of the folder's entries to the disk, so that it survives a power
/// failure. Not every file system supports that, so failures are ignored.
void syncFolder(const std::filesystem::path& folder) {
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) {
        ::fsync(opened.number());
    }
}

/// Asks again and again, since the system's own wait for a lock has no time limit.
bool waitForLock(int file, std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds interval{2};
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        const bool isHeldByOthers = errno == EWOULDBLOCK || errno == EINTR;
        if (!isHeldByOthers || std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(interval);
    }
    return true;
}

std::optional<Version> versionIn(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
#if defined(__APPLE__)
    const timespec modified = status.st_mtimespec;
    const timespec changed = status.st_ctimespec;
#else
    const timespec modified = status.st_mtim;
    const timespec changed = status.st_ctim;
#endif
    return Version{status.st_dev, status.st_ino, status.st_size, sinceEpoch(modified),
                   sinceEpoch(changed)};
}

}  // namespace

FileDescriptor openForReading(const std::filesystem::path& path) {
    // Without O_NONBLOCK a pipe of that name would block us until someone writes to it.
    return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
}

ReadOutcome read(const std::filesystem::path& path, std::size_t maxSize, std::string& contents) {
    const FileDescriptor file = openForReading(path);
    if (!file.isOpen()) {
        return errno == ENOENT ? ReadOutcome::absent : ReadOutcome::refused;
    }
    return read(file, maxSize, contents);
}

ReadOutcome read(const FileDescriptor& file, std::size_t maxSize, std::string& contents) {
    if (!versionOf(file)) {
        return ReadOutcome::unusable;
    }
    std::string all;
    std::array<char, 16384> chunk{};
    for (;;) {
        const ssize_t size =
            retryOnInterrupt([&] { return ::read(file.number(), chunk.data(), chunk.size()); });
        if (size < 0) {
            return ReadOutcome::refused;
        }
        if (size == 0) {
            contents = std::move(all);
            return ReadOutcome::read;
        }
        all.append(chunk.data(), static_cast<std::size_t>(size));
        if (all.size() > maxSize) {
            return ReadOutcome::unusable;
        }
    }
}

std::optional<Version> versionOf(const FileDescriptor& file) {
    struct stat status = {};
    return ::fstat(file.number(), &status) == 0 ? versionIn(status) : std::nullopt;
}

std::optional<Version> versionAt(const std::filesystem::path& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? versionIn(status) : std::nullopt;
}

bool isSettled(const Version& version, std::chrono::system_clock::time_point now) {
    // The coarsest timestamps count in steps of two seconds, and may lag behind a little.
    constexpr std::chrono::seconds longestTick{3};
    return now.time_since_epoch() - std::max(version.modified, version.changed) >= longestTick;
}

bool makeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    if (std::filesystem::is_directory(folder, error)) {
        return true;
    }
    if (!folder.has_relative_path() || !makeFolder(folder.parent_path())) {
        return false;
    }
    if (::mkdir(folder.c_str(), ownerFolder) == 0) {
        // The umask may have removed some of the owner's own rights.
        return ::chmod(folder.c_str(), ownerFolder) == 0;
    }
    // Another process may have been faster.
    return std::filesystem::is_directory(folder, error);
}

FileDescriptor lock(const std::filesystem::path& path, std::chrono::milliseconds limit) {
    // Opened anew for each lock: threads that shared an open file would not exclude each
    // other.
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, ownerFile));
    if (file.isOpen() && ::fchmod(file.number(), ownerFile) == 0 &&
        waitForLock(file.number(), limit)) {
        return file;
    }
    return {};
}

Replacement::Replacement(std::filesystem::path target, std::string_view contents)
    : target_(std::move(target)),
      temporary_(target_.string() + std::string(temporarySuffix) + "XXXXXX") {
    const FileDescriptor file(::mkostemp(temporary_.data(), O_CLOEXEC));
    if (!file.isOpen()) {
        temporary_.clear();
        return;
    }
    isWritten_ = ::fchmod(file.number(), ownerFile) == 0 && writeAll(file.number(), contents) &&
                 ::fsync(file.number()) == 0;
}

Replacement::~Replacement() {
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
    }
}

bool Replacement::putInPlace() {
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        return false;
    }
    temporary_.clear();
    syncFolder(target_.parent_path());
    return true;
}

void removeLeftovers(const std::filesystem::path& target) {
    const std::string prefix = target.filename().string() + std::string(temporarySuffix);
    std::error_code error;
    std::filesystem::directory_iterator entry(target.parent_path(), error);
    while (!error && entry != std::filesystem::directory_iterator()) {
        if (entry->path().filename().string().starts_with(prefix)) {
            ::unlink(entry->path().c_str());
        }
        entry.increment(error);
    }
}

}  // namespace tavrel::AtomicFile
