#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/plasma/PlasmaReconfigurationReports.h"
#include "platform/plasma/PlasmaWindowServer.h"
#include "tests/platform/plasma/StandInPlasma.h"
#include "tests/platform/x11/ReportRecorder.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/SilentSocket.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using Answer = StandInPlasma::Answer;
using Announcing = StandInPlasma::Announcing;
using support::waitUntil;

/// A window server of ours at one that does what it is told to.
class UnusualPlasmaTest : public testing::TestWithParam<Announcing> {
protected:
    DisplayID idOf(const std::string& name) const {
        plasma::ServerLink link({.displayName = plasma.displayName()});
        const layout::Layout layout = plasma::layoutOf(link.session()->outputs->state());
        for (const layout::Output& output : layout.outputs) {
            if (output.identity.connector == name) {
                return output.display;
            }
        }
        return 0;
    }

    StandInPlasma plasma{3, GetParam()};
    SimulatedUserDefaults store;
    PlasmaWindowServer server{
        store, {.displayName = plasma.displayName(), .timeout = std::chrono::milliseconds(2000)}};
    const DisplayID middle = idOf("DP-2");
};

TEST_P(UnusualPlasmaTest, IsSwitchedAsAnyOther) {
    plasma.change("DP-2", [](auto& output) {
        output.scale = 1.25;
        output.transform = 5;
    });
    const StandInPlasma::Output atFirst = plasma.output("DP-2");
    ASSERT_EQ(server.now()->allDisplays()->size(), 3U);

    ASSERT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);
    EXPECT_FALSE(plasma.output("DP-2").isEnabled);
    ASSERT_EQ(server.setDisplayEnabled(middle, true), serverStatus::success);

    const StandInPlasma::Output now = plasma.output("DP-2");
    EXPECT_TRUE(now.isEnabled);
    EXPECT_EQ(now.scale, atFirst.scale);
    EXPECT_EQ(now.transform, atFirst.transform);
    EXPECT_TRUE(isPlasmaOffered(plasma.displayName()));
}

TEST_P(UnusualPlasmaTest, SaysWhichMonitorIsConnected) {
    plasma.change("DP-2", [](auto& output) { output.edid = StandInPlasma::edidInBase64; });

    const DisplayHardware hardware = server.now()->hardware(idOf("DP-2"));

    EXPECT_EQ(hardware.monitor, "ACM 27U");
    EXPECT_EQ(hardware.connector, "DP-2");
}

TEST_P(UnusualPlasmaTest, WhatAnotherProgramHasSwitchedOnIsForgotten) {
    ASSERT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);
    ASSERT_EQ(layout::RememberedOutputs(store).all().size(), 1U);
    plasma.change("DP-2", [](auto& output) { output.isEnabled = true; });

    EXPECT_EQ(server.setDisplayEnabled(middle, true), serverStatus::success);

    EXPECT_TRUE(layout::RememberedOutputs(store).all().empty());
}

TEST_P(UnusualPlasmaTest, MayRefuseAndAllIsAsBefore) {
    plasma.answerNext({Answer::fail});
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::cannotComplete);
    EXPECT_TRUE(plasma.output("DP-2").isEnabled);
    EXPECT_TRUE(layout::RememberedOutputs(store).all().empty());
}

TEST_P(UnusualPlasmaTest, MayRefuseAModeAndTakeAnother) {
    plasma.unplug("DP-3");
    plasma.plug({.name = "DP-3",
                 .modes = {{3840, 2160, 60'000}, {1280, 1024, 60'000}},
                 .isEnabled = false});
    plasma.answerNext({Answer::fail});

    EXPECT_EQ(server.setDisplayEnabled(idOf("DP-3"), true), serverStatus::success);

    EXPECT_TRUE(plasma.output("DP-3").isEnabled);
    EXPECT_EQ(plasma.output("DP-3").mode, 1U);
}

TEST_P(UnusualPlasmaTest, ThatSaysAppliedAndHasDoneNothingIsNotBelieved) {
    plasma.answerNext({Answer::ignore});
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::cannotComplete);
    EXPECT_TRUE(plasma.output("DP-2").isEnabled);
}

TEST_P(UnusualPlasmaTest, ThatEndsTheConnectionIsAskedAgain) {
    ASSERT_TRUE(server.now()->isActive(middle));
    for (const Answer drop : {Answer::dropBefore, Answer::dropAfter}) {
        for (const bool enabled : {false, true}) {
            plasma.answerNext({drop});
            EXPECT_EQ(server.setDisplayEnabled(middle, enabled), serverStatus::success);
            EXPECT_EQ(plasma.output("DP-2").isEnabled, enabled);
            EXPECT_EQ(layout::RememberedOutputs(store).all().size(), enabled ? 0U : 1U);
        }
    }
    EXPECT_EQ(plasma.output("DP-2").x, 1920);
}

TEST_P(UnusualPlasmaTest, ThatAlwaysEndsTheConnectionIsGivenUp) {
    plasma.answerNext(std::vector<Answer>(100, Answer::dropBefore));
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::notImplemented);
    EXPECT_LT(plasma.configurations(), 10U);
}

TEST_P(UnusualPlasmaTest, IsAskedThroughAHotPlugThatEndsTheConnection) {
    ASSERT_TRUE(server.now()->isActive(middle));
    plasma.unplug("DP-3");
    plasma.dropClients();

    EXPECT_EQ(server.now()->allDisplays()->size(), 2U);
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);
    plasma.plug({.name = "DP-3", .x = 1920});
    plasma.dropClients();
    EXPECT_EQ(server.now()->allDisplays()->size(), 3U);
    EXPECT_EQ(server.setDisplayEnabled(middle, true), serverStatus::success);
}

TEST_P(UnusualPlasmaTest, ThatNeverAnswersAChangeIsInDoubt) {
    plasma.answerNext({Answer::nothing});
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::notImplemented);
    EXPECT_EQ(layout::RememberedOutputs(store).all().size(), 1U) << "it may have gone off";
    EXPECT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);
}

TEST_P(UnusualPlasmaTest, MayHaveNoOutputForAWhile) {
    ASSERT_TRUE(server.canSwitch());
    for (const char* name : {"DP-1", "DP-2", "DP-3"}) {
        plasma.unplug(name);
    }
    EXPECT_TRUE(server.canSwitch());
    EXPECT_THAT(server.now()->allDisplays(), testing::Optional(testing::IsEmpty()));

    plasma.plug({.name = "DP-2", .isEnabled = false});

    EXPECT_EQ(server.setDisplayEnabled(middle, true), serverStatus::success);
    EXPECT_TRUE(plasma.output("DP-2").isEnabled);
}

TEST_P(UnusualPlasmaTest, ReportsWhatIsPluggedInAndOut) {
    PlasmaReconfigurationReports reports(store, {.displayName = plasma.displayName()});
    ReportRecorder recorder;
    reports.registerCallback(ReportRecorder::callback, &recorder);

    plasma.unplug("DP-2");
    EXPECT_TRUE(waitUntil([&] {
        return recorder.contains({middle, displayChange::remove | displayChange::disabled});
    }));
    plasma.dropClients();
    plasma.plug({.name = "DP-2", .isEnabled = false});
    EXPECT_TRUE(waitUntil([&] { return recorder.contains({middle, displayChange::add}); }));
}

TEST_P(UnusualPlasmaTest, ReportsWhatChangedWhileTheConnectionWasLost) {
    PlasmaReconfigurationReports reports(store, {.displayName = plasma.displayName()});
    ReportRecorder recorder;
    reports.registerCallback(ReportRecorder::callback, &recorder);

    plasma.dropClientsAndChange("DP-2", [](auto& output) { output.y = 7; });

    EXPECT_TRUE(waitUntil([&] { return recorder.contains({middle, displayChange::moved}); }));
}

TEST(ReportsOfASilentPlasmaTest, EndWithoutWaitingForIt) {
    auto plasma = std::make_unique<StandInPlasma>();
    const std::string path = plasma->displayName();
    SimulatedUserDefaults store;
    auto reports = std::make_unique<PlasmaReconfigurationReports>(
        store, PlasmaServerOptions{.displayName = path});
    plasma.reset();
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    {
        // Whoever connects to it hears nothing.
        support::SilentSocket silent(path);
        silent.awaitClient();

        const auto begin = std::chrono::steady_clock::now();
        reports.reset();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, serverTimeout / 2);
    }
    std::filesystem::remove_all(std::filesystem::path(path).parent_path());
}

INSTANTIATE_TEST_SUITE_P(EachWay, UnusualPlasmaTest,
                         testing::Values(Announcing::byGlobals, Announcing::byRegistry),
                         [](const auto& way) {
                             return way.param == Announcing::byGlobals ? "OfGlobals"
                                                                       : "OfARegistry";
                         });

}  // namespace
}  // namespace tavrel
