#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>

#include "platform/posix/FileUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel {

/// A store in a folder of its own, which does not exist at first.
class FileUserDefaultsTest : public testing::Test {
protected:
    using Names = std::set<std::string>;

    /// Makes the store's file by hand.
    void write(const std::string& text) { support::writeFile(path, text); }
    std::string contents() const { return support::readFile(path); }
    std::filesystem::path beside(const std::string& suffix) const { return path.string() + suffix; }

    /// What is in the store's folder.
    Names names() const {
        Names names;
        for (const auto& entry : std::filesystem::directory_iterator(path.parent_path())) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    /// Gives the store to a user without special rights and becomes that user.
    bool becomeOrdinaryUser() const {
        constexpr uid_t nobody = 65534;
        if (geteuid() != 0) {
            return true;
        }
        for (const auto& each : {folder.path(), path.parent_path().parent_path(),
                                 path.parent_path(), path, beside(".lock")}) {
            if (std::filesystem::exists(each) && chown(each.c_str(), nobody, nobody) != 0) {
                return false;
            }
        }
        return setgid(nobody) == 0 && setuid(nobody) == 0;
    }

    const Names fileAndLock{"defaults.json", "defaults.json.lock"};
    support::TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "config" / "tavrel" / "defaults.json";
    FileUserDefaults store{path};
};

}  // namespace tavrel
