#pragma once

#include <filesystem>
#include <string>

namespace tavrel::support {

/// A new folder that only its owner can read. The destructor removes it with its content.
class TemporaryFolder {
public:
    /// Throws std::system_error when it cannot be created.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// The whole content of a file; empty when it cannot be read.
std::string readFile(const std::filesystem::path& file);

/// Writes or replaces a file, and creates the folders above it. Throws std::runtime_error.
void writeFile(const std::filesystem::path& file, const std::string& content);

}  // namespace tavrel::support
