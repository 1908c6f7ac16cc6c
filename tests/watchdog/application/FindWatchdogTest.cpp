#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/TemporaryFolder.h"
#include "watchdog/application/WatchdogProcess.h"

namespace tavrel::watchdog {
namespace {

class FindWatchdogTest : public testing::Test {
protected:
    /// Puts a file there; the folder is the prefix of an installation or a build tree.
    std::filesystem::path put(const std::filesystem::path& place) const {
        support::writeFile(prefix.path() / place, "");
        return std::filesystem::canonical(prefix.path() / place);
    }

    std::filesystem::path findFrom(const std::filesystem::path& applicationFolder) const {
        const auto found = findWatchdog(prefix.path() / applicationFolder);
        return found.empty() ? found : std::filesystem::canonical(found);
    }

    support::TemporaryFolder prefix;
};

TEST_F(FindWatchdogTest, FindsTheOneInTheBuildTree) {
    const auto file = put("release/libexec/display-watchdog");

    EXPECT_EQ(findFrom("release"), file);
}

TEST_F(FindWatchdogTest, FindsTheOneThatIsInstalledUnderTheSamePrefix) {
    put("bin/tavrel");
    const auto file = put("libexec/tavrel/display-watchdog");

    EXPECT_EQ(findFrom("bin"), file);
}

TEST_F(FindWatchdogTest, FindsTheOneBesideTheApplicationInABundle) {
    const auto file = put("Tavrel.app/Contents/MacOS/display-watchdog");

    EXPECT_EQ(findFrom("Tavrel.app/Contents/MacOS"), file);
}

TEST_F(FindWatchdogTest, WithoutOneThePathIsEmptyAndNothingCanBeStarted) {
    std::filesystem::create_directories(prefix.path() / "bin/display-watchdog");

    const auto found = findFrom("bin");

    EXPECT_EQ(found, "");
    EXPECT_EQ(WatchdogProcess::start(found), nullptr);
}

}  // namespace
}  // namespace tavrel::watchdog
