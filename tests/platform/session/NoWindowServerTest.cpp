#include "platform/session/NoWindowServer.h"

#include <gtest/gtest.h>

namespace tavrel {
namespace {

constexpr DisplayID remembered = 7;

TEST(NoWindowServerTest, SwitchesNothing) {
    NoWindowServer server;

    EXPECT_FALSE(server.canSwitch());
    EXPECT_EQ(server.setDisplayEnabled(remembered, true), serverStatus::notImplemented);
    EXPECT_EQ(server.setDisplayEnabled(remembered, false), serverStatus::notImplemented);
}

TEST(NoWindowServerTest, ListsNothingOfItsOwnAndMissesNothing) {
    NoWindowServer server;
    const auto moment = server.now();

    EXPECT_EQ(moment->allDisplays(), std::nullopt);
    EXPECT_EQ(moment->onlineDisplays(), std::vector<DisplayID>{}) << "so that the rest is listed";
    EXPECT_TRUE(moment->isCurrent());
    EXPECT_TRUE(moment->isOnline(remembered));
    EXPECT_TRUE(moment->isActive(remembered));
}

}  // namespace
}  // namespace tavrel
