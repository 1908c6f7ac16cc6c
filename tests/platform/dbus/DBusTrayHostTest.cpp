#include "platform/dbus/DBusTrayHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "tests/platform/x11/hotkeys/ManualMainQueue.h"
#include "tests/support/MessageBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TrayWatcher.h"

namespace tavrel {
namespace {

using support::TrayWatcher;
using testing::ElementsAre;

class DBusTrayHostTest : public testing::Test {
protected:
    DBusTrayHostTest() {
        host.observe([this] { told.push_back(host.isPresent()); });
    }

    bool isToldTimes(std::size_t times) {
        return mainQueue.runUntil([&] { return told.size() >= times; });
    }

    support::TemporaryFolder folder;
    support::Janitor janitor{folder.path()};
    const std::string address = "unix:path=" + (folder.path() / "session").string();
    const support::MessageBus bus{folder.path(), "session", janitor};
    std::optional<TrayWatcher> watcher;
    ManualMainQueue mainQueue;
    DBusTrayHost host{mainQueue, address};
    std::vector<bool> told;
};

TEST_F(DBusTrayHostTest, FollowsAWatcherThatComesAndGoes) {
    EXPECT_FALSE(host.isPresent());

    watcher.emplace(address);
    EXPECT_TRUE(isToldTimes(1));
    watcher.reset();
    EXPECT_TRUE(isToldTimes(2));
    watcher.emplace(address);
    EXPECT_TRUE(isToldTimes(3));

    EXPECT_THAT(told, ElementsAre(true, false, true));
}

TEST_F(DBusTrayHostTest, IsAbsentWhileNobodyShowsTheIcons) {
    watcher.emplace(address);
    EXPECT_TRUE(isToldTimes(1));

    watcher->setHost(false);
    EXPECT_TRUE(isToldTimes(2));
    watcher->setHost(true);
    EXPECT_TRUE(isToldTimes(3));

    EXPECT_THAT(told, ElementsAre(true, false, true));
}

/// It knows nothing of the icons that were registered with the first.
TEST_F(DBusTrayHostTest, TellsOfAWatcherThatTakesAnothersPlace) {
    watcher.emplace(address);
    EXPECT_TRUE(isToldTimes(1));

    const TrayWatcher another(address);

    EXPECT_TRUE(isToldTimes(2));
    EXPECT_THAT(told, ElementsAre(true, true));
}

}  // namespace
}  // namespace tavrel
