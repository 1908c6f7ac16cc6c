#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>

#include "platform/posix/AtomicFile.h"
#include "platform/posix/BlockingUserDefaults.h"

namespace tavrel {

/// The file with this user's defaults: `tavrel/defaults.json` in the folder that
/// XDG_CONFIG_HOME names, otherwise in `.config` of the home folder. That is HOME, or what
/// the user database says. Variables that are empty or not absolute paths count as unset.
/// An empty path when there is no home folder at all.
///
/// Reads the environment, so no other thread may be changing it.
std::filesystem::path defaultsPath();

/// The user-defaults store as one file: a JSON object of key to text. Values are UTF-8
/// text; others are refused.
///
/// The file is replaced as a whole, so that readers see the old state or the new one and
/// no mixture, also after a crash or a power failure. Only its owner can read it. Writers
/// of other keys, in this process or another, are not overwritten: each write holds a lock
/// file beside it while it reads, changes and replaces. A lock that others keep for longer than
/// a time limit makes the write fail. Reading takes no lock.
///
/// What was read stays in memory. Each `data` checks whether the file has changed since,
/// whoever changed it, and reads it again only then.
///
/// A file that is not a JSON object (or is above 16 MiB) is an empty store; the first
/// write renames it to end in ".damaged" instead of overwriting it. A file that cannot be
/// read for another reason is left alone, and writes fail.
class FileUserDefaults : public BlockingUserDefaults {
public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    /// The store in the file at `path`, which is absolute. Neither it nor its folder need
    /// exist; the first write creates them. With an empty path there is no store: reads
    /// find nothing and writes fail.
    ///
    /// The file's timestamps are compared with `clock`, which is asked once each time
    /// `data` reads the file.
    explicit FileUserDefaults(std::filesystem::path path,
                              Clock clock = std::chrono::system_clock::now,
                              std::chrono::milliseconds lockLimit = defaultLockLimit);

    /// Others hold the lock for as long as it takes to write a small file.
    static constexpr std::chrono::seconds defaultLockLimit{5};

    std::optional<std::string> data(std::string_view key) override;
    bool setData(std::string_view key, std::string_view bytes) override;
    /// Calls `change` once, with the lock held.
    bool update(std::string_view key, const Change& change) override;

    std::optional<Texts> all() override;
    /// Keys and values must be valid UTF-8.
    bool canHold(std::string_view key, std::string_view bytes) const override;

private:
    /// Returns whether what the store holds is known.
    bool readIfChanged();

    const std::filesystem::path path_;
    const Clock clock_;
    const std::chrono::milliseconds lockLimit_;

    std::mutex mutex_;
    /// The file's values by key, as last read.
    Texts texts_;
    /// The version of the file that `texts_` was read from; std::nullopt when the file has
    /// to be read again in any case.
    std::optional<AtomicFile::Version> settledVersion_;
};

}  // namespace tavrel
