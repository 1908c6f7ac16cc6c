#include "platform/plasma/PlasmaReconfigurationReports.h"

#include <chrono>
#include <optional>

#include "tests/platform/plasma/LivePlasmaTest.h"
#include "tests/platform/x11/ReportRecorder.h"

namespace tavrel {
namespace {

using support::waitUntil;

class PlasmaReconfigurationReportsTest : public LivePlasmaTest {
protected:
    void SetUp() override {
        LivePlasmaTest::SetUp();
        if (desktop.has_value()) {
            reports.emplace(store, options);
            ASSERT_EQ(reports->registerCallback(ReportRecorder::callback, &recorder),
                      serverStatus::success);
        }
    }

    ReportRecorder recorder;
    std::optional<PlasmaReconfigurationReports> reports;
};

TEST_F(PlasmaReconfigurationReportsTest, ADisplayThatGoesOffAndComesOnIsReported) {
    ASSERT_EQ(server->setDisplayEnabled(right, false), serverStatus::success);
    EXPECT_TRUE(waitUntil([&] { return recorder.contains({right, displayChange::disabled}); }));

    ASSERT_EQ(server->setDisplayEnabled(right, true), serverStatus::success);
    EXPECT_TRUE(waitUntil([&] { return recorder.contains({right, displayChange::enabled}); }));
    EXPECT_FALSE(recorder.knows(left));
}

TEST_F(PlasmaReconfigurationReportsTest, AChangeByAnotherProgramIsReported) {
    changeElsewhere(right, [](auto& shown) { shown->area.x += 10; });

    EXPECT_TRUE(waitUntil([&] { return recorder.contains({right, displayChange::moved}); }));
}

TEST_F(PlasmaReconfigurationReportsTest, WhatChangesWhileTheServerIsAwayIsReportedLater) {
    ASSERT_EQ(server->setDisplayEnabled(left, false), serverStatus::success);
    ASSERT_TRUE(waitUntil([&] { return recorder.knows(left); }));
    recorder.take();
    desktop->kill();
    desktop->start();
    ASSERT_TRUE(
        waitUntil([&] { return server->setDisplayEnabled(left, true) == serverStatus::success; }));

    EXPECT_TRUE(waitUntil([&] { return recorder.knows(left); }));
}

TEST_F(PlasmaReconfigurationReportsTest, ThereIsOneCallbackAtATime) {
    EXPECT_EQ(reports->registerCallback(ReportRecorder::callback, nullptr),
              serverStatus::cannotComplete);
    EXPECT_EQ(reports->removeCallback(ReportRecorder::callback, nullptr),
              serverStatus::illegalArgument);
    EXPECT_EQ(reports->removeCallback(ReportRecorder::callback, &recorder), serverStatus::success);
    ASSERT_EQ(server->setDisplayEnabled(right, false), serverStatus::success);
    EXPECT_FALSE(recorder.knows(right));
}

TEST_F(PlasmaReconfigurationReportsTest, EndWithoutWaitingForASilentServer) {
    desktop->pause();
    const auto begin = std::chrono::steady_clock::now();
    reports.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, serverTimeout / 2);
    desktop->resume();
}

TEST(NoPlasmaReportsTest, IsAStatus) {
    SimulatedUserDefaults store;
    PlasmaReconfigurationReports reports(store, {.displayName = "nonsense"});
    EXPECT_EQ(reports.registerCallback(ReportRecorder::callback, nullptr),
              serverStatus::notImplemented);
}

}  // namespace
}  // namespace tavrel
