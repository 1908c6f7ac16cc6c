#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/guard/GuardProcess.h"
#include "platform/guard/GuardedLifecycle.h"
#include "platform/x11/X11ReconfigurationReports.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/ReportRecorder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

namespace tavrel::guard {
namespace {

using testing::ElementsAre;
using x11::DisplayReport;

/// Reports of changes that a guard makes, as the application puts the parts together.
class AnnouncementTest : public LiveServerTest {
protected:
    AnnouncementTest() {
        EXPECT_EQ(reports.registerCallback(&ReportRecorder::callback, &recorder), 0);
    }
    ~AnnouncementTest() override { reports.removeCallback(&ReportRecorder::callback, &recorder); }

    std::unique_ptr<RunningGuard> start() {
        setenv("DISPLAY", desktop.displayName().c_str(), 1);
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        return startable ? GuardProcess::start(TAVREL_GUARD) : nullptr;
    }

    /// All reports up to the one that ends this change.
    std::vector<DisplayReport> reportsUpTo(const DisplayReport& end) {
        std::vector<DisplayReport> all;
        EXPECT_TRUE(support::waitUntil([&] {
            for (const DisplayReport& each : recorder.take()) {
                all.push_back(each);
            }
            return std::find(all.begin(), all.end(), end) != all.end();
        }));
        return all;
    }

    /// Off and on, in between and afterwards once more what is so already.
    void expectOneBeginForEachChange(DisplayLifecycle& lifecycle) {
        using namespace displayChange;
        const DisplayID right = idOf("DUMMY2");
        for (const bool enabled : {false, true, false, true}) {
            const DisplayReport change{right, enabled ? displayChange::enabled : disabled};
            EXPECT_EQ(lifecycle.setDisplayEnabled(right, enabled), 0);
            EXPECT_EQ(lifecycle.setDisplayEnabled(right, enabled), 0);
            EXPECT_EQ(lifecycle.setDisplayEnabled(1, enabled), 1001);
            EXPECT_THAT(reportsUpTo(change),
                        ElementsAre(DisplayReport{right, beginConfiguration}, change));
        }
    }

    support::TemporaryFolder folder;
    bool startable = true;
    ReportRecorder recorder;
    X11ReconfigurationReports reports{{.displayName = desktop.displayName()}};
    X11WindowServer ours{store, &reports, {.displayName = desktop.displayName()}};
    KeeperSurroundings surroundings{
        .startGuard = [this] { return start(); },
        .willSwitch = [this](DisplayID display,
                             bool enabled) { ours.announceChange(display, enabled); }};
};

TEST_F(AnnouncementTest, aChangeByTheGuardBeginsOnceLikeAnyOther) {
    GuardedLifecycle guarded(ours, surroundings);
    expectOneBeginForEachChange(guarded);
}

TEST_F(AnnouncementTest, soDoesOneMadeHereForWantOfAGuard) {
    startable = false;
    GuardedLifecycle guarded(ours, surroundings);
    expectOneBeginForEachChange(guarded);
}

}  // namespace
}  // namespace tavrel::guard
