#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/FileDescriptor.h"

/// Files that are read whole, replaced whole and private to their owner. Nothing here
/// throws; a failure leaves no trace but what its function says.
namespace tavrel::AtomicFile {

enum class ReadOutcome {
    read,
    absent,
    /// Not a regular file, or longer than was allowed.
    unusable,
    /// The system refused, for one because of missing rights.
    refused,
};

/// Opens a file for reading without waiting, even when it is a pipe. The result holds none
/// when that failed; errno tells why.
FileDescriptor openForReading(const std::filesystem::path& path);

/// Reads all of the file into `contents`, which is set only when the outcome is `read`.
ReadOutcome read(const std::filesystem::path& path, std::size_t maxSize, std::string& contents);
/// The same for a file that `openForReading` has just opened.
ReadOutcome read(const FileDescriptor& file, std::size_t maxSize, std::string& contents);

/// What tells one state of a regular file from the next, as far as the clock of the file
/// system does. Times are since the system clock's epoch.
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

/// Whether every write to the file from `now` on gives it another version. Not so shortly
/// after a change, since another may fall into the same tick of the file system's clock.
/// (A program that writes through a memory mapping may escape even this.)
bool isSettled(const Version& version, std::chrono::system_clock::time_point now);

/// Makes the folder and those above it that are missing, each for the owner alone.
/// Returns whether the folder is there.
bool makeFolder(const std::filesystem::path& folder);

/// Waits for the lock file `path`, making it if need be. The lock lasts as long as the
/// result; when that holds no file there is no lock. Two threads of one process exclude
/// one another as two processes do. The file stays behind.
FileDescriptor lock(const std::filesystem::path& path);

/// New contents for a file, on the disk beside it but not yet in its place. Vanishes
/// unless put in place.
class Replacement {
public:
    /// Writes `contents`; `isWritten` tells whether that worked.
    Replacement(std::filesystem::path target, std::string_view contents);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    bool isWritten() const { return isWritten_; }

    /// Puts the new file in the place of the old, on the disk too when it returns.
    /// Returns whether the new one is there; when not, the old one still is.
    ///
    /// REQUIRES: `isWritten`.
    bool putInPlace();

private:
    std::filesystem::path target_;
    std::string temporary_;
    bool isWritten_ = false;
};

/// Removes what killed writers of `target` left beside it. Only while no other writer
/// can be at work.
void removeLeftovers(const std::filesystem::path& target);

}  // namespace tavrel::AtomicFile
