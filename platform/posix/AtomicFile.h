#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/FileDescriptor.h"

/// Files that are read whole, replaced whole and private to their owner. Nothing here
/// throws; results tell what failed.
namespace tavrel::AtomicFile {

enum class ReadOutcome {
    read,
    absent,
    /// Not a regular file, or longer than was allowed.
    unusable,
    /// The system refused, for example because of missing rights.
    refused,
};

/// Opens a file for reading; never blocks, not even on a pipe. The result is not open when
/// that failed, and errno tells why.
FileDescriptor openForReading(const std::filesystem::path& path);

/// Reads all of the file into `contents`, which is set only when the outcome is `read`.
ReadOutcome read(const std::filesystem::path& path, std::size_t maxSize, std::string& contents);
/// The same for a file that `openForReading` has just opened.
ReadOutcome read(const FileDescriptor& file, std::size_t maxSize, std::string& contents);

/// Tells one state of a regular file from the next, as far as the file system's timestamps
/// do. Times are since the system clock's epoch.
struct Version {
    dev_t device;
    ino_t inode;
    off_t size;
    std::chrono::nanoseconds modified;
    std::chrono::nanoseconds changed;

    friend bool operator==(const Version&, const Version&) = default;
};

/// std::nullopt when no file is open or it is not a regular one.
std::optional<Version> versionOf(const FileDescriptor& file);
/// The same of what `path` leads to, without opening it.
std::optional<Version> versionAt(const std::filesystem::path& path);

/// Whether every write to the file from `now` on gives it another version. False shortly
/// after a change, since the next one may get the same timestamp. Writes through a memory
/// mapping are not covered: their timestamps come late.
bool isSettled(const Version& version, std::chrono::system_clock::time_point now);

/// Creates the folder and its missing parents, each accessible to the owner only. Returns
/// whether the folder exists now.
bool makeFolder(const std::filesystem::path& folder);

/// Locks the file `path`, which is created if missing and never removed; blocks until the
/// lock is free, but not for longer than `limit`. It is held as long as the result exists; a
/// result that is not open means that locking failed. Excludes other threads of this process as
/// well as other processes.
FileDescriptor lock(const std::filesystem::path& path, std::chrono::milliseconds limit);

/// New contents for a file, on the disk beside it but not yet in its place. The
/// destructor removes them unless they were put in place.
class Replacement {
public:
    /// Writes `contents`; `isWritten` tells whether that worked.
    Replacement(std::filesystem::path target, std::string_view contents);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    bool isWritten() const { return isWritten_; }

    /// Replaces the old file by the new one and flushes that to the disk. Returns whether
    /// it was replaced; when not, the old file is still there.
    ///
    /// REQUIRES: `isWritten`.
    bool putInPlace();

private:
    std::filesystem::path target_;
    std::string temporary_;
    bool isWritten_ = false;
};

/// Removes the temporary files that killed writers of `target` left beside it.
///
/// REQUIRES: no other writer is at work, so the caller holds their lock.
void removeLeftovers(const std::filesystem::path& target);

}  // namespace tavrel::AtomicFile
