#pragma once

#include <filesystem>

#include "platform/UserDefaults.h"

namespace tavrel {

/// The user-defaults store as one file: a JSON object of key to text. Values are UTF-8
/// text; others are refused.
///
/// The file is replaced as a whole, so that a reader, a crash or a loss of power sees a
/// former state or the new one and nothing between; it is readable by its owner alone.
/// Writers of other keys, in this process or another, are not overwritten: each write
/// holds a lock file beside while it reads, changes and replaces. Reading takes no lock.
///
/// A file that is not a JSON object (or is above 16 MiB) is an empty store; the first
/// write renames it to end in ".damaged" instead of overwriting it. A file that cannot be
/// read for another reason is left alone, and writes fail.
class FileUserDefaults : public UserDefaults {
public:
    /// The store in the file at `path`, an absolute one. Neither it nor its folder need
    /// exist; the first write makes them. With an empty path there is no store: reads find
    /// nothing and writes fail.
    explicit FileUserDefaults(std::filesystem::path path);

    std::optional<std::string> data(std::string_view key) override;
    bool setData(std::string_view key, std::string_view bytes) override;

private:
    const std::filesystem::path path_;
};

}  // namespace tavrel
