#include "platform/dbus/DBusLid.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>

#include "tests/support/LidService.h"
#include "tests/support/MessageBus.h"
#include "tests/support/SilentSocket.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel {
namespace {

using support::LidService;
using support::waitUntil;

class DBusLidTest : public testing::Test {
protected:
    void startBus() { bus.emplace(folder.path(), "system", janitor); }

    void watch() {
        lid = std::make_unique<DBusLid>(address);
        lid->observe([this] { ++changes; });
    }

    bool becomes(bool closed) {
        return waitUntil([&] { return lid->isClosed() == closed; });
    }

    support::TemporaryFolder folder;
    support::Janitor janitor{folder.path()};
    const std::string address = "unix:path=" + (folder.path() / "system").string();
    std::optional<support::MessageBus> bus;
    std::atomic<int> changes = 0;
    std::unique_ptr<DBusLid> lid;
};

TEST_F(DBusLidTest, FollowsThePowerService) {
    startBus();
    LidService service(address, LidService::Kind::upower, true);

    watch();
    EXPECT_TRUE(becomes(true));

    service.setClosed(false);
    EXPECT_TRUE(becomes(false));
    service.setClosed(true);
    EXPECT_TRUE(becomes(true));
}

TEST_F(DBusLidTest, FollowsTheSessionManagerWhereThereIsNoPowerService) {
    startBus();
    LidService service(address, LidService::Kind::login, false);
    watch();

    service.setClosed(true);
    EXPECT_TRUE(becomes(true));

    service.setClosed(false);
    EXPECT_TRUE(becomes(false));
}

TEST_F(DBusLidTest, TellsOfEachChangeAndOfNothingElse) {
    startBus();
    LidService service(address, LidService::Kind::upower, false);
    watch();
    for (int change = 1; change <= 4; ++change) {
        service.setClosed(change % 2 == 1);
        EXPECT_TRUE(waitUntil([&] { return changes == change; }));
    }

    lid->observe(nullptr);
    service.setClosed(true);
    EXPECT_TRUE(becomes(true));

    EXPECT_EQ(changes, 4);
}

TEST_F(DBusLidTest, AnObserverMayEndItself) {
    startBus();
    LidService service(address, LidService::Kind::upower, false);
    watch();
    lid->observe([this] {
        ++changes;
        lid->observe(nullptr);
    });

    service.setClosed(true);
    EXPECT_TRUE(becomes(true));
    service.setClosed(false);
    EXPECT_TRUE(becomes(false));

    EXPECT_EQ(changes, 1);
}

TEST_F(DBusLidTest, BelievesThePowerServiceMoreThanTheSessionManager) {
    startBus();
    const LidService login(address, LidService::Kind::login, true);
    watch();
    ASSERT_TRUE(becomes(true));

    std::optional<LidService> upower(std::in_place, address, LidService::Kind::upower, false);
    EXPECT_TRUE(becomes(false));

    upower.reset();
    EXPECT_TRUE(becomes(true)) << "without it, the other's word counts again";
}

TEST_F(DBusLidTest, IsOpenOnceNobodySaysOtherwiseAnyMore) {
    startBus();
    std::optional<LidService> service(std::in_place, address, LidService::Kind::upower, true);
    watch();
    ASSERT_TRUE(becomes(true));

    service.reset();
    EXPECT_TRUE(becomes(false));

    service.emplace(address, LidService::Kind::upower, true);
    EXPECT_TRUE(becomes(true));
}

TEST_F(DBusLidTest, AServiceThatHangsKeepsNobodyFromBelievingTheOther) {
    startBus();
    LidService hanging(address, LidService::Kind::upower, false);
    hanging.hang();
    LidService login(address, LidService::Kind::login, false);
    watch();

    login.setClosed(true);

    EXPECT_TRUE(becomes(true));
}

TEST_F(DBusLidTest, IsOpenWithoutABusAndFollowsOneThatComesAndGoes) {
    watch();
    EXPECT_FALSE(lid->isClosed());

    startBus();
    const auto service = std::make_unique<LidService>(address, LidService::Kind::upower, true);
    EXPECT_TRUE(becomes(true));

    bus.reset();
    EXPECT_TRUE(becomes(false));
}

TEST_F(DBusLidTest, ABusThatHangsKeepsNobodyWaiting) {
    support::SilentSocket socket(folder.path() / "system");

    watch();
    socket.awaitClient();

    EXPECT_FALSE(lid->isClosed());
    lid.reset();
}

}  // namespace
}  // namespace tavrel
