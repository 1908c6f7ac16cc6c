#include "platform/x11/X11ReconfigurationReports.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <thread>

#include "platform/x11/RandrLayoutServer.h"
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
        EXPECT_EQ(reports.registerCallback(&ReportRecorder::callback, &recorder),
                  serverStatus::success);
    }

    bool hasCome(const DisplayReport& report) {
        return support::waitUntil([&] { return recorder.contains(report); });
    }

    /// What has been reported of all that other programs have done so far.
    std::vector<DisplayReport> taken() {
        // A server that answers somebody has sent off all notices of what happened before.
        desktop.screenSize();
        // A beginning is passed on before what has come in meanwhile; so when a second one
        // has been, everything from before the first has.
        constexpr DisplayID marker = 1;
        std::vector<DisplayReport> all;
        for (int i = 0; i < 2; ++i) {
            reports.beginConfiguration(marker);
            EXPECT_TRUE(hasCome({marker, beginConfiguration}));
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
    other.run({"--addmode", "DUMMY3", "1920x1080"});
    EXPECT_THAT(taken(), IsEmpty());
    other.run({"--output", "DUMMY3", "--mode", "1920x1080", "--pos", "5760x0"});
    // Nobody but us made the server look at its connectors since.
    ASSERT_TRUE(hasCome({idOf("DUMMY3"), add | enabled}));
    EXPECT_TRUE(server.isOnline(idOf("DUMMY3")));
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{idOf("DUMMY3"), add | enabled}));
}

TEST_F(X11ReconfigurationReportsTest, AnnouncesOurOwnChangesBeforehand) {
    X11WindowServer ours(store, &reports, {.displayName = desktop.displayName()});
    ASSERT_EQ(ours.setDisplayEnabled(left, false), serverStatus::success);
    EXPECT_THAT(taken(), UnorderedElementsAre(DisplayReport{left, beginConfiguration},
                                              DisplayReport{left, disabled},
                                              DisplayReport{middle, setMain}));
    ASSERT_EQ(ours.setDisplayEnabled(left, true), serverStatus::success);
    const std::vector<DisplayReport> on = taken();
    ASSERT_THAT(on, ElementsAre(DisplayReport{left, beginConfiguration},
                                DisplayReport{left, enabled | setMain}));

    EXPECT_EQ(ours.setDisplayEnabled(left, true), serverStatus::success);
    EXPECT_EQ(ours.setDisplayEnabled(1, true), serverStatus::illegalArgument);
    EXPECT_THAT(taken(), IsEmpty()) << "nothing was going to change";
}

TEST_F(X11ReconfigurationReportsTest, TheBeginningAlwaysComesFirst) {
    X11WindowServer ours(store, &reports, {.displayName = desktop.displayName()});
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(ours.setDisplayEnabled(right, i % 2 != 0), serverStatus::success);
        const std::vector<DisplayReport> seen = taken();
        ASSERT_THAT(seen, ElementsAre(DisplayReport{right, beginConfiguration},
                                      DisplayReport{right, i % 2 != 0 ? enabled : disabled}));
    }
}

TEST_F(X11ReconfigurationReportsTest, TheBeginningComesFirstAlsoWhileTheServerIsBeingLookedAt) {
    const auto connection = x11::Connection::connect({.displayName = desktop.displayName()});
    ASSERT_NE(connection, nullptr);
    x11::RandrLayoutServer program(*connection);
    ASSERT_TRUE(program.grab());
    const auto layout = program.read();
    ASSERT_TRUE(layout.has_value());
    const x11::Output* output = x11::connectedOutput(*layout, right);
    ASSERT_NE(output, nullptr);
    // Of this the reports learn at once, but they cannot look at it before the server is
    // free again; a moment lets them get that far.
    ASSERT_TRUE(program.setPrimary(output->id));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    reports.beginConfiguration(right);
    ASSERT_TRUE(program.setCrtc({.crtc = output->crtc}, layout->configTimestamp));
    program.ungrab();
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{right, beginConfiguration},
                                     DisplayReport{right, disabled | setMain}));
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
    reports.beginConfiguration(left);
    EXPECT_TRUE(support::waitUntil([&] { return recorder.contains({left, beginConfiguration}); }));
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
