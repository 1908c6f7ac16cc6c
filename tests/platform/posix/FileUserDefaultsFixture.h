#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

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

    /// Goes on as a user without special rights, who owns the store.
    bool becomeOrdinaryUser() const {
        constexpr uid_t nobody = 65534;
        if (geteuid() != 0) {
            return true;
        }
        for (const auto& path :
             {folder_.path(), path_.parent_path().parent_path(), path_.parent_path(), path_,
              std::filesystem::path(path_.string() + ".lock")}) {
            if (std::filesystem::exists(path) && chown(path.c_str(), nobody, nobody) != 0) {
                return false;
            }
        }
        return setgid(nobody) == 0 && setuid(nobody) == 0;
    }

    support::TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_.path() / "config" / "tavrel" / "defaults.json";
    FileUserDefaults store_{path_};
};

}  // namespace tavrel
