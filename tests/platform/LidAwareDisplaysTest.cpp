#include "platform/LidAwareDisplays.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <vector>

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

/// A server that is silent, and counts how often it was to look for monitors.
class SilentServer : public DisplayQueries {
public:
    std::unique_ptr<DisplayMoment> now() override { return std::make_unique<Moment>(); }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override {
        ++probes;
        return now();
    }

    int probes = 0;

private:
    class Moment : public DisplayMoment {
    public:
        bool isCurrent() override { return false; }
        std::optional<std::vector<DisplayID>> allDisplays() override { return std::nullopt; }
        std::optional<std::vector<DisplayID>> onlineDisplays() override { return std::nullopt; }
        bool isBuiltIn(DisplayID /*display*/) override { return false; }
        bool isOnline(DisplayID /*display*/) override { return false; }
        bool isActive(DisplayID /*display*/) override { return false; }
        std::uint32_t vendorNumber(DisplayID /*display*/) override { return 0; }
        std::uint32_t modelNumber(DisplayID /*display*/) override { return 0; }
        std::uint32_t serialNumber(DisplayID /*display*/) override { return 0; }
    };
};

class LidAwareDisplaysTest : public testing::Test {
protected:
    LidAwareDisplaysTest() {
        server.connect({.id = panel, .builtIn = true, .vendor = 2, .model = 3, .serial = 4});
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
}

TEST_F(LidAwareDisplaysTest, WhetherTheLidIsOpenOrNotTheServerIsMadeToLookForMonitors) {
    SilentServer silent;
    LidAwareQueries aware(silent, lid);

    aware.nowAfterProbing();
    lid.close();
    aware.nowAfterProbing();

    EXPECT_EQ(silent.probes, 2);
}

TEST_F(LidAwareDisplaysTest, UnderAClosedLidOldAnswersAreStillKnownToBeOld) {
    SilentServer silent;
    LidAwareQueries aware(silent, lid);
    lid.close();

    EXPECT_FALSE(aware.now()->isCurrent());
    EXPECT_TRUE(queries.now()->isCurrent());
}

TEST_F(LidAwareDisplaysTest, AListThatTheServerCannotGiveStaysUnknown) {
    server.setHasPrivateList(false);
    server.setHasOnlineList(false);
    lid.close();

    EXPECT_EQ(queries.now()->allDisplays(), std::nullopt);
    EXPECT_EQ(queries.now()->onlineDisplays(), std::nullopt);
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
