#include "platform/x11/X11ReconfigurationReports.h"

#include <gmock/gmock.h>

#include <memory>

#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/ReportRecorder.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {

namespace x11 {
void PrintTo(const DisplayReport& report, std::ostream* out) {
    *out << report.display << std::hex << ":0x" << report.flags << std::dec;
}
}  // namespace x11

namespace {

using namespace displayChange;
using support::VirtualDesktop;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using x11::DisplayReport;

class X11ReconfigurationReportsTest : public LiveServerTest {
protected:
    X11ReconfigurationReportsTest() {
        other.connect(markerOutput, 0, 1080);
        EXPECT_TRUE(support::waitUntil([&] { return server.now()->isOnline(marker); }));
        EXPECT_EQ(reports.registerCallback(&ReportRecorder::callback, &recorder),
                  serverStatus::success);
        taken();
    }

    bool hasCome(const DisplayReport& report) {
        return support::waitUntil([&] { return recorder.contains(report); });
    }

    /// What has been reported of all that other programs have done so far.
    std::vector<DisplayReport> taken() {
        // Reports come in order, and those of one look by display. So when the second of two
        // changes of the marker has come, all that happened before the first has.
        std::vector<DisplayReport> all;
        for (const char* mode : {"1280x1024", "1920x1080"}) {
            other.setMode(markerOutput, mode);
            EXPECT_TRUE(support::waitUntil([&] { return recorder.knows(marker); }));
            for (const DisplayReport& each : recorder.take()) {
                if (each.display != marker) {
                    all.push_back(each);
                }
            }
        }
        return all;
    }

    ReportRecorder recorder;
    X11ReconfigurationReports reports{{.displayName = desktop.displayName()}};
    const DisplayID left = idOf("DUMMY0");
    const DisplayID middle = idOf("DUMMY1");
    const DisplayID right = idOf("DUMMY2");
    /// A fourth monitor, below the left one, that only says when all is told.
    const std::string markerOutput = "DUMMY3";
    const DisplayID marker = idOf(markerOutput);
};

TEST_F(X11ReconfigurationReportsTest, SaysNothingWhileNothingChanges) {
    EXPECT_THAT(taken(), IsEmpty());
    other.run({"--query"});
    EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(X11ReconfigurationReportsTest, TellsWhenAnotherProgramSwitchesADisplay) {
    other.switchOff("DUMMY1");
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{middle, disabled}));
    other.run({"--output", "DUMMY1", "--mode", "1920x1080", "--pos", "1920x0"});
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{middle, enabled}));
    other.switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});
    EXPECT_THAT(taken(),
                UnorderedElementsAre(DisplayReport{left, disabled}, DisplayReport{middle, disabled},
                                     DisplayReport{right, disabled}));
}

TEST_F(X11ReconfigurationReportsTest, TellsWhenAnotherProgramRearranges) {
    other.setMode("DUMMY2", "1280x1024");
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{right, setMode}));
    other.setPosition("DUMMY2", 3840, 56);
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{right, moved}));
    other.setPrimary("DUMMY1");
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{middle, setMain}));
    other.run({"--output", "DUMMY2", "--mode", "1920x1080", "--pos", "0x0"});
    EXPECT_THAT(taken(), UnorderedElementsAre(DisplayReport{left, mirror},
                                              DisplayReport{right, moved | setMode | mirror}));
    other.setPosition("DUMMY2", 3840, 0);
    EXPECT_THAT(taken(), UnorderedElementsAre(DisplayReport{left, unMirror},
                                              DisplayReport{right, moved | unMirror}));
}

TEST_F(X11ReconfigurationReportsTest, TellsOfAMonitorThatAppears) {
    other.run({"--addmode", "DUMMY4", "1920x1080"});
    EXPECT_THAT(taken(), IsEmpty());

    other.run({"--output", "DUMMY4", "--mode", "1920x1080", "--pos", "7680x0"});

    // Nobody but us made the server look at its connectors since.
    ASSERT_TRUE(hasCome({idOf("DUMMY4"), add | enabled}));
    EXPECT_TRUE(server.now()->isOnline(idOf("DUMMY4")));
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{idOf("DUMMY4"), add | enabled}));
}

TEST_F(X11ReconfigurationReportsTest, TellsOfOurOwnChangesAsOfAnyOther) {
    ASSERT_EQ(server.setDisplayEnabled(right, false), serverStatus::success);
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{right, disabled}));

    ASSERT_EQ(server.setDisplayEnabled(right, true), serverStatus::success);
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{right, enabled}));

    EXPECT_EQ(server.setDisplayEnabled(right, true), serverStatus::success);
    EXPECT_EQ(server.setDisplayEnabled(1, true), serverStatus::illegalArgument);
    EXPECT_THAT(taken(), IsEmpty()) << "nothing was going to change";
}

TEST_F(X11ReconfigurationReportsTest, ARemovedCallbackHearsNoMore) {
    EXPECT_EQ(reports.removeCallback(&ReportRecorder::callback, &recorder), serverStatus::success);
    EXPECT_EQ(reports.removeCallback(&ReportRecorder::callback, &recorder),
              serverStatus::illegalArgument);
    ReportRecorder second;
    ASSERT_EQ(reports.registerCallback(&ReportRecorder::callback, &second), serverStatus::success);
    other.switchOff("DUMMY1");
    EXPECT_TRUE(support::waitUntil([&] { return second.contains({middle, disabled}); }));
    EXPECT_THAT(recorder.take(), IsEmpty());
    EXPECT_EQ(reports.removeCallback(&ReportRecorder::callback, &second), serverStatus::success);
}

TEST_F(X11ReconfigurationReportsTest, OutlivesTheServer) {
    desktop.kill();
    EXPECT_EQ(reports.removeCallback(&ReportRecorder::callback, &recorder), serverStatus::success);
}

TEST(X11ReconfigurationReportsWithoutServerTest, RefuseTheCallback) {
    X11ReconfigurationReports reports({.displayName = ":4093"});
    ReportRecorder recorder;
    EXPECT_EQ(reports.registerCallback(&ReportRecorder::callback, &recorder),
              serverStatus::notImplemented);
    EXPECT_EQ(reports.removeCallback(&ReportRecorder::callback, &recorder),
              serverStatus::illegalArgument);
}

TEST(X11ReconfigurationReportsWithoutRandrTest, RefuseTheCallback) {
    const VirtualDesktop desktop({.randr = false});
    X11ReconfigurationReports reports({.displayName = desktop.displayName()});
    ReportRecorder recorder;
    EXPECT_EQ(reports.registerCallback(&ReportRecorder::callback, &recorder),
              serverStatus::notImplemented);
}

}  // namespace
}  // namespace tavrel
