#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/posix/FileUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel {

/// A store in a folder of its own, which does not exist at first.
class FileUserDefaultsTest : public testing::Test {
protected:
    /// Makes the store's file by hand.
    void write(const std::string& text) { support::writeFile(path_, text); }
    std::string contents() const { return support::readFile(path_); }

    /// What is in the store's folder.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_.parent_path())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    support::TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_.path() / "config" / "tavrel" / "defaults.json";
    FileUserDefaults store_{path_};
};

}  // namespace tavrel
