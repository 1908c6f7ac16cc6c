#include "tests/support/TemporaryFolder.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tavrel::support {

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tavrel-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "mkdtemp " + pattern);
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string readFile(const std::filesystem::path& file) {
    // Not through a stream's buffer: it throws when the process of a file under /proc ends.
    std::string content;
    std::ifstream in(file, std::ios::binary);
    std::array<char, 4096> part{};
    while (in.read(part.data(), part.size()) || in.gcount() > 0) {
        content.append(part.data(), static_cast<std::size_t>(in.gcount()));
    }
    return content;
}

void writeFile(const std::filesystem::path& file, const std::string& content) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << content;
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

}  // namespace tavrel::support
