#include "platform/posix/DefaultsPath.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace tavrel {
namespace {

/// Sets or unsets an environment variable until the end of the scope.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* before = getenv(name)) {
            before_ = before;
        }
        set(value);
    }
    ~ScopedVariable() { set(before_ ? before_->c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void set(const char* value) {
        if (value == nullptr) {
            unsetenv(name_);
        } else {
            setenv(name_, value, /*overwrite=*/1);
        }
    }

    const char* name_;
    std::optional<std::string> before_;
};

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
