#include "platform/x11/X11ReconfigurationReports.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/ReportRecorder.h"
#include "tests/platform/x11/ServerProcess.h"
#include "tests/platform/x11/connection/RequestRelay.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {

namespace layout {
void PrintTo(const DisplayReport& report, std::ostream* out) {
    *out << report.display << std::hex << ":0x" << report.flags << std::dec;
}
}  // namespace layout

namespace {

using namespace displayChange;
using layout::DisplayReport;
using support::VirtualDesktop;
using support::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A callback's user info that does what the test says.
struct Scripted {
    static void callback(DisplayID, std::uint32_t, void* self) {
        static_cast<Scripted*>(self)->act();
    }
    std::function<void()> act;
};

class X11ReconfigurationReportsTest : public LiveServerTest {
protected:
    X11ReconfigurationReportsTest() {
        other.connect(markerOutput, 0, 1080);
        EXPECT_TRUE(waitUntil([&] { return server.now()->isOnline(marker); }));
        EXPECT_EQ(addCallback(recorder), serverStatus::success);
        taken();
    }

    template <typename UserInfo>
    ServerStatus addCallback(UserInfo& userInfo) {
        return reports.registerCallback(&UserInfo::callback, &userInfo);
    }

    template <typename UserInfo>
    ServerStatus removeCallback(UserInfo& userInfo) {
        return reports.removeCallback(&UserInfo::callback, &userInfo);
    }

    /// What has been reported of all that other programs have done so far.
    std::vector<DisplayReport> taken() {
        // Reports come in order, and those of one look by display. So when the second of two
        // changes of the marker has come, all that happened before the first has.
        std::vector<DisplayReport> all;
        for (const char* mode : {"1280x1024", "1920x1080"}) {
            other.setMode(markerOutput, mode);
            EXPECT_TRUE(waitUntil([&] { return recorder.knows(marker); }));
            for (const DisplayReport& each : recorder.take()) {
                if (each.display != marker) {
                    all.push_back(each);
                }
            }
        }
        return all;
    }

    ReportRecorder recorder;
    X11ReconfigurationReports reports{store, {.displayName = desktop.displayName()}};
    const DisplayID left = idOf("DUMMY0");
    const DisplayID middle = idOf("DUMMY1");
    const DisplayID right = idOf("DUMMY2");
    /// A fourth monitor, below the left one, that only says when all is told.
    const std::string markerOutput = "DUMMY3";
    const DisplayID marker = idOf(markerOutput);
};

TEST_F(X11ReconfigurationReportsTest, NothingIsReportedWhileNothingChanges) {
    EXPECT_THAT(taken(), IsEmpty());

    other.run({"--query"});
    EXPECT_THAT(taken(), IsEmpty());
}

TEST_F(X11ReconfigurationReportsTest, ReportsWhatAnotherProgramSwitches) {
    other.switchOff("DUMMY1");
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{middle, disabled}));

    other.run({"--output", "DUMMY1", "--mode", "1920x1080", "--pos", "1920x0"});
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{middle, enabled}));

    other.switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});
    EXPECT_THAT(taken(),
                UnorderedElementsAre(DisplayReport{left, disabled}, DisplayReport{middle, disabled},
                                     DisplayReport{right, disabled}));
}

TEST_F(X11ReconfigurationReportsTest, ReportsWhatAnotherProgramRearranges) {
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

TEST_F(X11ReconfigurationReportsTest, ReportsAMonitorThatAppears) {
    other.run({"--addmode", "DUMMY4", "1920x1080"});
    EXPECT_THAT(taken(), IsEmpty());

    other.run({"--output", "DUMMY4", "--mode", "1920x1080", "--pos", "7680x0"});

    // Nobody but us made the server look at its connectors since.
    const DisplayReport appeared{idOf("DUMMY4"), add | enabled};
    ASSERT_TRUE(waitUntil([&] { return recorder.contains(appeared); }));
    EXPECT_TRUE(server.now()->isOnline(idOf("DUMMY4")));
    EXPECT_THAT(taken(), ElementsAre(appeared));
}

TEST_F(X11ReconfigurationReportsTest, ReportsOurOwnChangesAsAnyOther) {
    ASSERT_EQ(server.setDisplayEnabled(right, false), serverStatus::success);
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{right, disabled}));

    ASSERT_EQ(server.setDisplayEnabled(right, true), serverStatus::success);
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{right, enabled}));

    EXPECT_EQ(server.setDisplayEnabled(right, true), serverStatus::success);
    EXPECT_EQ(server.setDisplayEnabled(1, true), serverStatus::illegalArgument);
    EXPECT_THAT(taken(), IsEmpty()) << "nothing was going to change";
}

TEST_F(X11ReconfigurationReportsTest, ARemovedCallbackIsNotCalledAnyMore) {
    ReportRecorder second;

    EXPECT_EQ(removeCallback(recorder), serverStatus::success);
    EXPECT_EQ(removeCallback(recorder), serverStatus::illegalArgument);
    ASSERT_EQ(addCallback(second), serverStatus::success);
    other.switchOff("DUMMY1");

    EXPECT_TRUE(waitUntil([&] { return second.contains({middle, disabled}); }));
    EXPECT_THAT(recorder.take(), IsEmpty());
    EXPECT_EQ(removeCallback(second), serverStatus::success);
}

TEST_F(X11ReconfigurationReportsTest, ASecondCallbackIsRefusedWhileOneIsRegistered) {
    ReportRecorder second;

    EXPECT_EQ(addCallback(second), serverStatus::cannotComplete);
    EXPECT_EQ(addCallback(recorder), serverStatus::cannotComplete);

    EXPECT_EQ(removeCallback(second), serverStatus::illegalArgument);
    other.switchOff("DUMMY1");
    EXPECT_THAT(taken(), ElementsAre(DisplayReport{middle, disabled}));
    EXPECT_THAT(second.take(), IsEmpty());
}

TEST_F(X11ReconfigurationReportsTest, RemovingACallbackBlocksUntilItsCallHasReturned) {
    std::atomic<bool> entered = false;
    std::atomic<bool> mayLeave = false;
    std::atomic<bool> hasReturned = false;
    Scripted scripted{[&] {
        entered = true;
        mayLeave.wait(false);
        hasReturned = true;
    }};
    removeCallback(recorder);
    ASSERT_EQ(addCallback(scripted), serverStatus::success);
    other.switchOff("DUMMY1");
    ASSERT_TRUE(waitUntil([&] { return entered.load(); }));

    std::atomic<bool> removed = false;
    std::thread remover([&] {
        EXPECT_EQ(removeCallback(scripted), serverStatus::success);
        EXPECT_TRUE(hasReturned);
        removed = true;
    });

    // Nothing can show that a thread will wait for ever; a moment shows one that does not.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(removed);
    mayLeave = true;
    mayLeave.notify_all();
    remover.join();
}

TEST_F(X11ReconfigurationReportsTest, ACallbackMayRemoveItself) {
    std::atomic<int> calls = 0;
    Scripted scripted;
    scripted.act = [&] {
        EXPECT_EQ(removeCallback(scripted), serverStatus::success);
        ++calls;
    };
    removeCallback(recorder);
    ASSERT_EQ(addCallback(scripted), serverStatus::success);

    other.switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});

    ASSERT_TRUE(waitUntil([&] { return calls == 1; }));
    ASSERT_EQ(addCallback(recorder), serverStatus::success);
    taken();
    EXPECT_EQ(calls, 1) << "not called for the other two displays either";
}

TEST_F(X11ReconfigurationReportsTest, ACallbackMayBeRemovedWhenTheServerIsGone) {
    desktop.kill();

    EXPECT_EQ(removeCallback(recorder), serverStatus::success);
}

/// Reports whose server falls silent at the first question that a change leads to.
class SilencedReportsTest : public LiveServerTest {
protected:
    ServerProcess process{desktop};
    std::atomic<bool> isArmed = false;
    std::atomic<bool> isSilent = false;
    RequestRelay relay{desktop.displayName(), [this](RequestRelay::Request) {
                           if (isArmed.exchange(false)) {
                               process.pause();
                               isSilent = true;
                           }
                       }};
};

TEST_F(SilencedReportsTest, TheirEndDoesNotWaitForASilentServer) {
    auto reports = std::make_unique<X11ReconfigurationReports>(
        store,
        X11ServerOptions{.displayName = relay.displayName(), .timeout = std::chrono::hours(1)});
    isArmed = true;
    // It may be held up too.
    auto change = std::async(std::launch::async, [&] { other.switchOff("DUMMY1"); });
    ASSERT_TRUE(waitUntil([&] { return isSilent.load(); }));

    auto end = std::async(std::launch::async, [&] { reports.reset(); });

    EXPECT_EQ(end.wait_for(support::defaultTimeout), std::future_status::ready);
    process.resume();
}

TEST(X11ReconfigurationReportsWithoutServerTest, TheCallbackIsRefused) {
    SimulatedUserDefaults store;
    X11ReconfigurationReports reports(store, {.displayName = ":4093"});
    ReportRecorder recorder;

    EXPECT_EQ(reports.registerCallback(&ReportRecorder::callback, &recorder),
              serverStatus::notImplemented);
    EXPECT_EQ(reports.removeCallback(&ReportRecorder::callback, &recorder),
              serverStatus::illegalArgument);
}

TEST(X11ReconfigurationReportsWithoutRandrTest, TheCallbackIsRefused) {
    const VirtualDesktop desktop({.randr = false});
    SimulatedUserDefaults store;
    X11ReconfigurationReports reports(store, {.displayName = desktop.displayName()});
    ReportRecorder recorder;

    EXPECT_EQ(reports.registerCallback(&ReportRecorder::callback, &recorder),
              serverStatus::notImplemented);
}

}  // namespace
}  // namespace tavrel
