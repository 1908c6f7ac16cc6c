#include "platform/macos/MacReconfigurationReports.h"

#include <future>
#include <mutex>
#include <thread>

#include "platform/macos/MacWindowServer.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/CoreGraphics.h"

namespace tavrel {
namespace {

using simulatedMac::deliverReportsOfOthers;
using simulatedMac::Refusals;
using simulatedMac::takeCalls;
using testing::_;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;

constexpr std::uint32_t begins = displayChange::beginConfiguration;
constexpr std::uint32_t wentOff = displayChange::disabled;
constexpr std::uint32_t wentOn = displayChange::enabled;

struct Heard {
    DisplayID display;
    std::uint32_t flags;
    std::thread::id thread;
};

class Listener {
public:
    static void callback(DisplayID display, std::uint32_t flags, void* userInfo) {
        auto& self = *static_cast<Listener*>(userInfo);
        const std::lock_guard lock(self.mutex_);
        self.heard_.push_back({display, flags, std::this_thread::get_id()});
    }

    std::vector<Heard> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(heard_, {});
    }

private:
    std::mutex mutex_;
    std::vector<Heard> heard_;
};

class MacReconfigurationReportsTest : public MacFixture {
protected:
    MacWindowServer server;
    MacReconfigurationReports reports{server};
    Listener listener;
};

TEST_F(MacReconfigurationReportsTest, ownChangesAreReportedOnTheThreadThatMakesThem) {
    ASSERT_EQ(reports.registerCallback(&Listener::callback, &listener), 0);
    std::thread::id changing;
    std::thread([&] {
        changing = std::this_thread::get_id();
        server.setDisplayEnabled(monitor, false);
    }).join();
    EXPECT_THAT(listener.take(), ElementsAre(FieldsAre(monitor, begins, changing),
                                             FieldsAre(monitor, wentOff, changing)));
    // They are not others'.
    deliverReportsOfOthers();
    EXPECT_THAT(listener.take(), IsEmpty());
    EXPECT_EQ(reports.removeCallback(&Listener::callback, &listener), 0);
}

TEST_F(MacReconfigurationReportsTest, changesOfOthersAreReportedByTheMainLoop) {
    ASSERT_EQ(reports.registerCallback(&Listener::callback, &listener), 0);
    switchElsewhere(mac, {monitor, other}, false);
    switchElsewhere(mac, {other}, true);
    EXPECT_THAT(listener.take(), IsEmpty());
    deliverReportsOfOthers();
    const auto here = std::this_thread::get_id();
    EXPECT_THAT(listener.take(),
                ElementsAre(FieldsAre(monitor, begins, here), FieldsAre(other, begins, here),
                            FieldsAre(monitor, wentOff, here), FieldsAre(other, wentOff, here),
                            FieldsAre(other, begins, here), FieldsAre(other, wentOn, here)));
    EXPECT_EQ(reports.removeCallback(&Listener::callback, &listener), 0);
}

TEST_F(MacReconfigurationReportsTest, comingAndGoingIsReportedAsTheServerCallsIt) {
    mac.with([](simulatedMac::State& state) { state.switchesComeAndGo = true; });
    ASSERT_EQ(reports.registerCallback(&Listener::callback, &listener), 0);
    disconnect(mac, other);
    deliverReportsOfOthers();
    server.setDisplayEnabled(monitor, false);
    EXPECT_THAT(
        listener.take(),
        ElementsAre(FieldsAre(other, begins, _),
                    FieldsAre(other, displayChange::remove | displayChange::disabled, _),
                    FieldsAre(monitor, begins, _),
                    FieldsAre(monitor, displayChange::remove | displayChange::disabled, _)));
    EXPECT_EQ(reports.removeCallback(&Listener::callback, &listener), 0);
}

TEST_F(MacReconfigurationReportsTest, eachCallbackIsCalledWithItsOwnUserInfo) {
    Listener second;
    ASSERT_EQ(reports.registerCallback(&Listener::callback, &listener), 0);
    ASSERT_EQ(reports.registerCallback(&Listener::callback, &second), 0);
    EXPECT_EQ(reports.removeCallback(&Listener::callback, &listener), 0);
    server.setDisplayEnabled(monitor, false);
    EXPECT_THAT(listener.take(), IsEmpty());
    EXPECT_EQ(second.take().size(), 2U);
    EXPECT_EQ(reports.removeCallback(&Listener::callback, &second), 0);
}

TEST_F(MacReconfigurationReportsTest, aChangeThatChangesNothingIsNotReported) {
    ASSERT_EQ(reports.registerCallback(&Listener::callback, &listener), 0);
    server.setDisplayEnabled(monitor, true);
    EXPECT_THAT(listener.take(), IsEmpty());
    EXPECT_EQ(reports.removeCallback(&Listener::callback, &listener), 0);
}

TEST_F(MacReconfigurationReportsTest, aRefusedRegistrationGivesItsStatus) {
    refuse(&Refusals::registerCallback, 1002);
    EXPECT_EQ(reports.registerCallback(&Listener::callback, &listener), 1002);
    EXPECT_THAT(takeCalls(), ElementsAre("CGDisplayRegisterReconfigurationCallback"));
    server.setDisplayEnabled(monitor, false);
    EXPECT_THAT(listener.take(), IsEmpty());
}

TEST_F(MacReconfigurationReportsTest, removingWhatIsNotRegisteredGivesTheServersStatus) {
    EXPECT_EQ(reports.removeCallback(&Listener::callback, &listener), 1001);
    EXPECT_THAT(takeCalls(), ElementsAre("CGDisplayRemoveReconfigurationCallback"));
}

TEST_F(MacReconfigurationReportsTest, removingWaitsForACallThatIsRunning) {
    struct Slow {
        std::promise<void> entered;
        std::promise<void> removed;
        std::atomic<bool> isRunning = false;

        static void callback(DisplayID, std::uint32_t flags, void* userInfo) {
            auto& self = *static_cast<Slow*>(userInfo);
            if (flags != begins) {
                return;
            }
            self.isRunning = true;
            self.entered.set_value();
            // Comes only if nobody waits for this call.
            self.removed.get_future().wait_for(std::chrono::milliseconds(200));
            self.isRunning = false;
        }
    } slow;
    ASSERT_EQ(reports.registerCallback(&Slow::callback, &slow), 0);
    std::thread changing([this] { server.setDisplayEnabled(monitor, false); });
    slow.entered.get_future().wait();
    EXPECT_EQ(reports.removeCallback(&Slow::callback, &slow), 0);
    EXPECT_FALSE(slow.isRunning);
    slow.removed.set_value();
    changing.join();
}

TEST_F(MacReconfigurationReportsTest, aCallbackMayRemoveItself) {
    struct Once {
        ReconfigurationReports& reports;
        int calls = 0;

        static void callback(DisplayID, std::uint32_t, void* userInfo) {
            auto& self = *static_cast<Once*>(userInfo);
            ++self.calls;
            self.reports.removeCallback(&Once::callback, userInfo);
        }
    } once{reports};
    ASSERT_EQ(reports.registerCallback(&Once::callback, &once), 0);
    server.setDisplayEnabled(monitor, false);
    EXPECT_EQ(once.calls, 1);
}

}  // namespace
}  // namespace tavrel
