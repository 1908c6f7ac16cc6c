#include "platform/posix/DefaultsPath.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace tavrel {
namespace {

std::filesystem::path absoluteOrEmpty(const char* path) {
    const std::filesystem::path found = path == nullptr ? "" : path;
    return found.is_absolute() ? found : std::filesystem::path{};
}

std::filesystem::path homeInUserDatabase() {
    std::array<char, 16384> texts{};
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found);
    return absoluteOrEmpty(found == nullptr ? nullptr : found->pw_dir);
}

std::filesystem::path configFolder() {
    if (auto folder = absoluteOrEmpty(std::getenv("XDG_CONFIG_HOME")); !folder.empty()) {
        return folder;
    }
    std::filesystem::path home = absoluteOrEmpty(std::getenv("HOME"));
    if (home.empty()) {
        home = homeInUserDatabase();
    }
    return home.empty() ? home : home / ".config";
}

}  // namespace

std::filesystem::path defaultsPath() {
    const std::filesystem::path folder = configFolder();
    return folder.empty() ? folder : folder / "tavrel" / "defaults.json";
}

}  // namespace tavrel
