#include "platform/LidAwareDisplays.h"

#include <gmock/gmock.h>

#include <vector>

#include "tests/simulated/SilentQueries.h"
#include "tests/simulated/SimulatedLid.h"
#include "tests/simulated/SimulatedWindowServer.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using testing::Pair;

constexpr DisplayID panel = 5;
constexpr DisplayID external = 1;

class LidAwareDisplaysTest : public testing::Test {
protected:
    LidAwareDisplaysTest() {
        server.connect({.id = panel,
                        .builtIn = true,
                        .vendor = 2,
                        .model = 3,
                        .serial = 4,
                        .hardware = {"ACM Panel", "eDP-1"}});
        server.connect({.id = external});
    }

    static void note(DisplayID display, std::uint32_t flags, void* test) {
        static_cast<LidAwareDisplaysTest*>(test)->reported.emplace_back(display, flags);
    }

    SimulatedWindowServer server;
    SimulatedLid lid;
    LidAwareQueries queries{server, lid};
    LidAwareReports reports{server, lid};
    std::vector<std::pair<DisplayID, std::uint32_t>> reported;
};

TEST_F(LidAwareDisplaysTest, UnderAnOpenLidTheServersAnswersStand) {
    const auto moment = queries.now();

    EXPECT_TRUE(moment->isOnline(panel));
    EXPECT_TRUE(moment->isActive(panel));
    EXPECT_THAT(moment->onlineDisplays(), Optional(ElementsAre(panel, external)));
}

TEST_F(LidAwareDisplaysTest, UnderAClosedLidTheBuiltInDisplayAloneIsNeitherOnlineNorActive) {
    lid.close();

    const auto moment = queries.now();

    EXPECT_FALSE(moment->isOnline(panel));
    EXPECT_FALSE(moment->isActive(panel));
    EXPECT_THAT(moment->onlineDisplays(), Optional(ElementsAre(external)));
    EXPECT_TRUE(moment->isOnline(external));
    EXPECT_TRUE(moment->isActive(external));
}

TEST_F(LidAwareDisplaysTest, UnderAClosedLidTheBuiltInDisplayIsStillKnown) {
    lid.close();

    const auto moment = queries.now();

    EXPECT_THAT(moment->allDisplays(), Optional(ElementsAre(panel, external)));
    EXPECT_TRUE(moment->isBuiltIn(panel));
    EXPECT_FALSE(moment->isBuiltIn(external));
    EXPECT_EQ(moment->vendorNumber(panel), 2U);
    EXPECT_EQ(moment->modelNumber(panel), 3U);
    EXPECT_EQ(moment->serialNumber(panel), 4U);
    EXPECT_EQ(moment->hardware(panel), (DisplayHardware{"ACM Panel", "eDP-1"}));
}

TEST_F(LidAwareDisplaysTest, AListThatTheServerCannotGiveStaysUnknown) {
    server.setHasPrivateList(false);
    server.setHasOnlineList(false);
    lid.close();

    EXPECT_EQ(queries.now()->allDisplays(), std::nullopt);
    EXPECT_EQ(queries.now()->onlineDisplays(), std::nullopt);
}

TEST_F(LidAwareDisplaysTest, UnderAClosedLidASilentServerIsKnownToBeSilent) {
    SilentQueries silent(server);
    LidAwareQueries behind(silent, lid);
    lid.close();

    silent.fallSilent();
    EXPECT_FALSE(behind.now()->isCurrent());
    silent.speak();
    EXPECT_TRUE(behind.now()->isCurrent());
}

TEST_F(LidAwareDisplaysTest, TheServerIsMadeToLookForMonitorsWhateverTheLid) {
    int looks = 0;
    SilentQueries silent(server);
    LidAwareQueries behind(silent, lid);
    silent.whileAwaited = [&] { ++looks; };

    EXPECT_TRUE(behind.nowAfterProbing()->isActive(panel));
    lid.close();
    EXPECT_FALSE(behind.nowAfterProbing()->isActive(panel));

    EXPECT_EQ(looks, 2);
}

TEST_F(LidAwareDisplaysTest, AMomentKeepsToTheLidItHasSeen) {
    const auto open = queries.now();
    lid.close();
    const auto closed = queries.now();
    lid.open();

    EXPECT_TRUE(open->isActive(panel));
    EXPECT_FALSE(closed->isActive(panel));
}

TEST_F(LidAwareDisplaysTest, EachChangeOfTheLidIsReportedAsAChangeOfTheDesktop) {
    reports.registerCallback(note, this);

    lid.close();
    lid.open();

    EXPECT_THAT(reported, ElementsAre(Pair(0, 0x1000), Pair(0, 0x1000)));
}

TEST_F(LidAwareDisplaysTest, TheServersReportsAndStatusesArePassedOn) {
    EXPECT_EQ(reports.registerCallback(note, this), 0);
    server.report(external, 0x8);

    EXPECT_EQ(reports.removeCallback(note, this), 0);
    server.report(external, 0x8);
    lid.close();

    EXPECT_THAT(reported, ElementsAre(Pair(external, 0x8)));
    EXPECT_EQ(server.callbacks(), 0U);
}

TEST_F(LidAwareDisplaysTest, NothingIsReportedToACallbackThatTheServerHasRefused) {
    server.setRegistrationStatus(serverStatus::notImplemented);

    EXPECT_EQ(reports.registerCallback(note, this), 1006);
    lid.close();

    EXPECT_THAT(reported, IsEmpty());
}

TEST_F(LidAwareDisplaysTest, ACallbackMayRemoveItself) {
    struct Self {
        LidAwareReports& reports;
        int calls = 0;
        static void remove(DisplayID /*display*/, std::uint32_t /*flags*/, void* info) {
            auto& self = *static_cast<Self*>(info);
            ++self.calls;
            self.reports.removeCallback(&Self::remove, info);
        }
    } self{reports};
    reports.registerCallback(&Self::remove, &self);

    lid.close();
    lid.open();

    EXPECT_EQ(self.calls, 1);
}

TEST(LidAwareReportsTest, TheLidIsLeftAloneInTheEnd) {
    SimulatedWindowServer server;
    SimulatedLid lid;
    { const LidAwareReports reports(server, lid); }

    EXPECT_FALSE(lid.hasObserver());
}

}  // namespace
}  // namespace tavrel
