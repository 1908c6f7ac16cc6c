#include "platform/gnome/GnomeLayoutServer.h"

#include <gmock/gmock.h>

#include "platform/gnome/GnomeWindowServer.h"
#include "platform/layout/WholeLayoutSwitch.h"
#include "tests/platform/gnome/SimulatedDisplayConfig.h"
#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel::gnome {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// A, the primary, left of B.
class GnomeLayoutServerTest : public testing::Test {
protected:
    GnomeLayoutServerTest() {
        config.add("A");
        config.show(0, true);
        config.add("B");
        config.show(1920);
    }

    ServerStatus off(const std::string& connector) { return switchTo(connector, false); }
    ServerStatus on(const std::string& connector) { return switchTo(connector, true); }
    ServerStatus switchTo(const std::string& connector, bool enabled) {
        return layout::switchDisplay(server, remembered, lastSeen, config.idOf(connector), enabled);
    }

    SimulatedDisplayConfig config;
    GnomeLayoutServer server{config};
    SimulatedUserDefaults store;
    layout::RememberedOutputs remembered{store};
    layout::LastSeen lastSeen;
};

TEST_F(GnomeLayoutServerTest, EveryLayoutIsAppliedTwiceAndForGoodAsFarAsTheSessionGoes) {
    EXPECT_EQ(off("B"), serverStatus::success);

    ASSERT_THAT(config.applied, SizeIs(2));
    EXPECT_EQ(config.applied[0], config.applied[1]);
    EXPECT_EQ(config.applied[0].second, DisplayConfig::Method::temporary);
    ASSERT_THAT(config.applied[0].first.logicalMonitors, SizeIs(1));
    EXPECT_TRUE(config.applied[0].first.logicalMonitors[0].isPrimary);
}

TEST_F(GnomeLayoutServerTest, HardwareThatChangesMeanwhileIsLookedAtAgain) {
    int changes = 0;
    config.verdict = [&](const Configuration&) {
        if (++changes > 3) {
            return Reply::done;
        }
        ++config.state.serial;
        return Reply::denied;
    };

    EXPECT_EQ(off("B"), serverStatus::success);

    EXPECT_FALSE(config.isOn("B"));
}

TEST_F(GnomeLayoutServerTest, FiveTimesAtMost) {
    config.verdict = [](const Configuration&) { return Reply::denied; };

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);

    EXPECT_THAT(config.applied, SizeIs(5));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(GnomeLayoutServerTest, WhatAnAdministratorForbidsIsNotOffered) {
    config.verdict = [](const Configuration&) { return Reply::denied; };
    config.allowed = false;

    EXPECT_EQ(off("B"), serverStatus::notImplemented);

    EXPECT_THAT(config.applied, SizeIs(1));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(GnomeLayoutServerTest, AnotherProgramThatUndoesItIsOverruledOnce) {
    int looks = 0;
    const auto all = config.state.logicalMonitors;
    config.beforeRead = [&] {
        if (++looks == 2) {
            config.state.logicalMonitors = all;
        }
    };

    EXPECT_EQ(off("B"), serverStatus::success);

    EXPECT_FALSE(config.isOn("B"));
}

TEST_F(GnomeLayoutServerTest, WhatAnotherProgramHasSwitchedOnIsForgotten) {
    const MonitorState before = config.state;
    ASSERT_EQ(off("B"), serverStatus::success);
    ASSERT_THAT(remembered.all(), SizeIs(1));
    config.state = before;

    EXPECT_EQ(on("B"), serverStatus::success);

    EXPECT_THAT(remembered.all(), IsEmpty());
    EXPECT_EQ(config.state, before) << "it stays as the other program has set it up";
}

TEST_F(GnomeLayoutServerTest, ARefusalLeavesAllAsItWas) {
    config.verdict = [](const Configuration&) { return Reply::refused; };

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);

    EXPECT_TRUE(config.isOn("B"));
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(GnomeLayoutServerTest, OneThatWillNotComeOnInOneModeIsTriedInAnother) {
    ASSERT_EQ(off("B"), serverStatus::success);
    config.verdict = [](const Configuration& configuration) {
        for (const LogicalSetting& each : configuration.logicalMonitors) {
            for (const MonitorSetting& setting : each.monitors) {
                if (setting.connector == "B" && setting.modeId != "1280x1024@60") {
                    return Reply::refused;
                }
            }
        }
        return Reply::done;
    };

    EXPECT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(config.state.monitors[1].currentMode, 1U);
    EXPECT_THAT(remembered.all(), IsEmpty());
}

TEST_F(GnomeLayoutServerTest, UnderAClosedLidAPanelIsRefusedAndTheOtherComesOn) {
    config.state.monitors[0].isBuiltIn = true;
    ASSERT_EQ(off("A"), serverStatus::success);
    config.add("C");
    config.verdict = [](const Configuration& configuration) {
        for (const LogicalSetting& each : configuration.logicalMonitors) {
            for (const MonitorSetting& setting : each.monitors) {
                if (setting.connector == "A") {
                    return Reply::refused;
                }
            }
        }
        return Reply::done;
    };

    EXPECT_EQ(on("A"), serverStatus::cannotComplete);
    EXPECT_EQ(on("C"), serverStatus::success);

    EXPECT_TRUE(config.isOn("B"));
    EXPECT_TRUE(config.isOn("C"));
    EXPECT_THAT(remembered.all(), SizeIs(1)) << "it comes back when the lid is open";
}

TEST_F(GnomeLayoutServerTest, ACompositorThatIsSilentOrGoneIsNotImplemented) {
    for (const Reply reply : {Reply::none, Reply::absent}) {
        config.readReply = reply;
        EXPECT_EQ(layout::switchDisplay(server, remembered, lastSeen, 1, true),
                  serverStatus::notImplemented);
    }
}

TEST_F(GnomeLayoutServerTest, OneThatFallsSilentMeanwhileMayDoItLaterSoTheWayBackIsKept) {
    config.verdict = [](const Configuration&) { return Reply::none; };

    EXPECT_EQ(off("B"), serverStatus::notImplemented);

    EXPECT_THAT(remembered.all(), SizeIs(1));
}

TEST_F(GnomeLayoutServerTest, AnErrorIsNoStateAndNothingIsChanged) {
    config.readReply = Reply::refused;

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);

    EXPECT_THAT(config.applied, IsEmpty());
}

TEST_F(GnomeLayoutServerTest, WhatMonitorsAreToldBesideTheModeStays) {
    config.state.monitors[0].settings = {.isUnderscanning = true, .colorMode = 1, .rgbRange = 2};
    config.state.canChangeLayoutMode = true;
    config.state.layoutMode = 2;

    ASSERT_EQ(off("B"), serverStatus::success);

    const Configuration& applied = config.applied.front().first;
    EXPECT_EQ(applied.logicalMonitors[0].monitors[0].settings, config.state.monitors[0].settings);
    EXPECT_EQ(applied.layoutMode, 2U);
}

TEST_F(GnomeLayoutServerTest, MirrorsAreOnePlace) {
    config.add("C");
    config.state.monitors[2].currentMode = 0;
    config.state.logicalMonitors[1].monitors.emplace_back("C");

    ASSERT_EQ(off("A"), serverStatus::success);

    ASSERT_THAT(config.state.logicalMonitors, SizeIs(1));
    EXPECT_THAT(config.state.logicalMonitors[0].monitors, testing::ElementsAre("B", "C"));
}

class GnomeProbeTest : public GnomeLayoutServerTest {};

TEST_F(GnomeProbeTest, KnowsACompositorThatTakesTheLayoutItHas) {
    EXPECT_TRUE(answersLikeGnome(config));

    ASSERT_THAT(config.applied, SizeIs(1));
    EXPECT_EQ(config.applied[0].second, DisplayConfig::Method::verify);
}

TEST_F(GnomeProbeTest, IsNotMisledByOneThatOnlyListsMonitors) {
    for (const Reply reply : {Reply::refused, Reply::absent}) {
        config.verdict = [&](const Configuration&) { return reply; };
        EXPECT_FALSE(answersLikeGnome(config));
    }
}

TEST_F(GnomeProbeTest, IsNotMisledByOneThatDoesNotEvenListThem) {
    for (const Reply reply : {Reply::refused, Reply::absent}) {
        config.readReply = reply;
        EXPECT_FALSE(answersLikeGnome(config));
    }
}

TEST_F(GnomeProbeTest, WaitsForOneThatHangsOrMayNotBeChanged) {
    config.verdict = [](const Configuration&) { return Reply::denied; };
    EXPECT_TRUE(answersLikeGnome(config));
    config.readReply = Reply::none;
    EXPECT_TRUE(answersLikeGnome(config));
}

}  // namespace
}  // namespace tavrel::gnome
