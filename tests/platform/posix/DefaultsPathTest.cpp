#include "platform/posix/FileUserDefaults.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "tests/support/ScopedVariable.h"

namespace tavrel {
namespace {

using support::ScopedVariable;

std::string pathWith(const char* configHome, const char* home) {
    const ScopedVariable configVariable("XDG_CONFIG_HOME", configHome);
    const ScopedVariable homeVariable("HOME", home);
    return defaultsPath().string();
}

TEST(DefaultsPath, IsInTheConfigHome) {
    EXPECT_EQ(pathWith("/some/config", "/some/home"), "/some/config/tavrel/defaults.json");
    EXPECT_EQ(pathWith("/some/config", nullptr), "/some/config/tavrel/defaults.json");
}

TEST(DefaultsPath, IsInTheHomeFolderWithoutAConfigHome) {
    EXPECT_EQ(pathWith(nullptr, "/some/home"), "/some/home/.config/tavrel/defaults.json");
    EXPECT_EQ(pathWith("", "/some/home"), "/some/home/.config/tavrel/defaults.json");
}

TEST(DefaultsPath, IgnoresAConfigHomeThatIsNotAbsolute) {
    EXPECT_EQ(pathWith("some/config", "/some/home"), "/some/home/.config/tavrel/defaults.json");
}

TEST(DefaultsPath, IsInTheHomeFolderOfTheUserDatabaseWithoutAHome) {
    const passwd* user = getpwuid(getuid());
    ASSERT_NE(user, nullptr);
    const std::string expected = std::string(user->pw_dir) + "/.config/tavrel/defaults.json";

    EXPECT_EQ(pathWith(nullptr, nullptr), expected);
    EXPECT_EQ(pathWith(nullptr, ""), expected);
    EXPECT_EQ(pathWith(nullptr, "not/absolute"), expected);
}

}  // namespace
}  // namespace tavrel
