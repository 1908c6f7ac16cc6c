#pragma once

#include <filesystem>
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

/// Reads all of the file into `contents`, which is set only when the outcome is `read`.
ReadOutcome read(const std::filesystem::path& path, std::size_t maxSize, std::string& contents);

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
