#include "platform/posix/FileUserDefaults.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>

#include "platform/JsonNesting.h"

namespace tavrel {
namespace {

using AtomicFile::ReadOutcome;
using nlohmann::json;

constexpr std::size_t maxFileSize = 16'777'216;

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

/// The object in `text`; null when `text` is not a JSON object.
json parseObject(const std::string& text) {
    // The parser takes a zero byte for the end of its input; valid JSON has none.
    if (text.find('\0') != std::string::npos || isNestedTooDeep(text)) {
        return nullptr;
    }
    json object = json::parse(text, nullptr, /*allow_exceptions=*/false);
    return object.is_object() ? object : json(nullptr);
}

/// The members of `object` that hold a text.
BlockingUserDefaults::Texts textsIn(const json& object) {
    BlockingUserDefaults::Texts texts;
    for (const auto& [key, value] : object.items()) {
        if (value.is_string()) {
            texts.emplace(key, value.get<std::string>());
        }
    }
    return texts;
}

/// std::nullopt when there is no text under `key`.
std::optional<std::string> textUnder(std::string_view key, const json& object) {
    const auto found = object.find(std::string(key));
    const bool isText = found != object.end() && found->is_string();
    return isText ? std::optional(found->get<std::string>()) : std::nullopt;
}

/// The text of `object`; std::nullopt when a part of it is not valid UTF-8.
std::optional<std::string> textOf(const json& object) {
    try {
        return object.dump(2) + "\n";
    } catch (const json::type_error&) {
        return std::nullopt;
    }
}

/// The file that a write replaces: `path` with links resolved, so that a link stays a link.
std::filesystem::path targetOf(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path target = std::filesystem::canonical(path, error);
    return error ? path : target;
}

std::filesystem::path withSuffix(std::filesystem::path path, const std::string& suffix) {
    path += suffix;
    return path;
}

bool hasFolder(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_directory(path.parent_path(), error);
}

/// Renames a damaged file to the first name that is free.
bool moveDamagedAside(const std::filesystem::path& target) {
    std::error_code error;
    std::filesystem::path kept = withSuffix(target, ".damaged");
    for (int copy = 2; std::filesystem::exists(kept, error) && !error; ++copy) {
        kept = withSuffix(target, ".damaged-" + std::to_string(copy));
    }
    std::filesystem::rename(target, kept, error);
    return !error;
}

}  // namespace

std::filesystem::path defaultsPath() {
    const std::filesystem::path folder = configFolder();
    return folder.empty() ? folder : folder / "tavrel" / "defaults.json";
}

FileUserDefaults::FileUserDefaults(std::filesystem::path path, Clock clock,
                                   std::chrono::milliseconds lockLimit)
    : path_(std::move(path)), clock_(std::move(clock)), lockLimit_(lockLimit) {}

std::optional<std::string> FileUserDefaults::data(std::string_view key) {
    const std::lock_guard guard(mutex_);
    readIfChanged();
    const auto found = texts_.find(key);
    return found == texts_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<BlockingUserDefaults::Texts> FileUserDefaults::all() {
    const std::lock_guard guard(mutex_);
    return readIfChanged() ? std::optional(texts_) : std::nullopt;
}

bool FileUserDefaults::canHold(std::string_view key, std::string_view bytes) const {
    return textOf({{std::string(key), std::string(bytes)}}).has_value();
}

bool FileUserDefaults::readIfChanged() {
    if (settledVersion_ && AtomicFile::versionAt(path_) == settledVersion_) {
        return true;
    }
    const FileDescriptor file = AtomicFile::openForReading(path_);
    const bool isAbsent = !file.isOpen() && errno == ENOENT;
    const auto version = AtomicFile::versionOf(file);
    texts_.clear();
    settledVersion_.reset();
    if (!version) {
        return file.isOpen() || (isAbsent && hasFolder(path_));
    }
    // Asked before reading, so that a write during the reading counts as a later one.
    const auto now = clock_();
    std::string text;
    const ReadOutcome outcome = AtomicFile::read(file, maxFileSize, text);
    if (outcome == ReadOutcome::read) {
        texts_ = textsIn(parseObject(text));
    }
    if (outcome != ReadOutcome::refused && AtomicFile::isSettled(*version, now)) {
        settledVersion_ = version;
    }
    return outcome != ReadOutcome::refused;
}

bool FileUserDefaults::setData(std::string_view key, std::string_view bytes) {
    return update(key, [&](const auto& /*old*/) { return std::string(bytes); });
}

bool FileUserDefaults::update(std::string_view key, const Change& change) {
    if (path_.empty() || !AtomicFile::makeFolder(path_.parent_path())) {
        return false;
    }
    const std::filesystem::path target = targetOf(path_);
    const FileDescriptor lock = AtomicFile::lock(withSuffix(target, ".lock"), lockLimit_);
    if (!lock.isOpen()) {
        return false;
    }
    AtomicFile::removeLeftovers(target);

    std::string oldText = "{}";
    const ReadOutcome outcome = AtomicFile::read(target, maxFileSize, oldText);
    if (outcome == ReadOutcome::refused) {
        return false;
    }
    json object = parseObject(oldText);
    const bool isDamaged = object.is_null() || outcome == ReadOutcome::unusable;
    if (isDamaged) {
        object = json::object();
    }
    const auto bytes = change(textUnder(key, object));
    if (!bytes) {
        return true;
    }
    object[std::string(key)] = *bytes;
    const auto newText = textOf(object);
    if (!newText) {
        return false;
    }
    AtomicFile::Replacement replacement(target, *newText);
    return replacement.isWritten() && (!isDamaged || moveDamagedAside(target)) &&
           replacement.putInPlace();
}

}  // namespace tavrel
