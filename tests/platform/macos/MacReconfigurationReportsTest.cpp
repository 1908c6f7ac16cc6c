#include "platform/macos/MacWindowServer.h"

#include <future>
#include <mutex>
#include <thread>

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/CoreGraphics.h"

namespace tavrel {
namespace {

using simulatedMac::deliverReportsOfOthers;
using simulatedMac::takeCalls;
using testing::_;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;

constexpr std::uint32_t begins = displayChange::beginConfiguration;
constexpr std::uint32_t wentOff = displayChange::disabled;
constexpr std::uint32_t wentOn = displayChange::enabled;
constexpr ServerStatus notRegistered = 1001;

struct Heard {
    DisplayID display;
    std::uint32_t flags;
    std::thread::id thread;
};

/// Listens from its construction to its end.
class Listener {
public:
    explicit Listener(ReconfigurationReports& reports) : reports_(reports) {
        EXPECT_EQ(reports_.registerCallback(&callback, this), 0);
    }
    ~Listener() { EXPECT_EQ(reports_.removeCallback(&callback, this), 0); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    std::vector<Heard> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(heard_, {});
    }

private:
    static void callback(DisplayID display, std::uint32_t flags, void* userInfo) {
        auto& self = *static_cast<Listener*>(userInfo);
        const std::lock_guard lock(self.mutex_);
        self.heard_.push_back({display, flags, std::this_thread::get_id()});
    }

    ReconfigurationReports& reports_;
    std::mutex mutex_;
    std::vector<Heard> heard_;
};

void ignore(DisplayID /*display*/, std::uint32_t /*flags*/, void* /*userInfo*/) {}

class MacReconfigurationReportsTest : public MacFixture {
protected:
    MacWindowServer server;
    MacReconfigurationReports reports{server};
};

TEST_F(MacReconfigurationReportsTest, OwnChangesAreReportedOnceOnTheThreadThatMakesThem) {
    Listener listener(reports);
    std::thread::id changing;

    std::thread([&] {
        changing = std::this_thread::get_id();
        server.setDisplayEnabled(monitor, false);
    }).join();
    deliverReportsOfOthers();

    EXPECT_THAT(listener.take(), ElementsAre(FieldsAre(monitor, begins, changing),
                                             FieldsAre(monitor, wentOff, changing)));
}

TEST_F(MacReconfigurationReportsTest, ChangesOfOthersAreReportedByTheMainLoop) {
    Listener listener(reports);
    const auto here = std::this_thread::get_id();

    switchElsewhere(mac, {monitor, other}, false);
    switchElsewhere(mac, {other}, true);
    EXPECT_THAT(listener.take(), IsEmpty());

    deliverReportsOfOthers();
    EXPECT_THAT(listener.take(),
                ElementsAre(FieldsAre(monitor, begins, here), FieldsAre(other, begins, here),
                            FieldsAre(monitor, wentOff, here), FieldsAre(other, wentOff, here),
                            FieldsAre(other, begins, here), FieldsAre(other, wentOn, here)));
}

TEST_F(MacReconfigurationReportsTest, FlagsArePassedOnAsTheServerSetsThem) {
    mac.with([](simulatedMac::State& state) { state.switchesComeAndGo = true; });
    Listener listener(reports);

    disconnect(mac, other);
    deliverReportsOfOthers();
    server.setDisplayEnabled(monitor, false);

    EXPECT_THAT(listener.take(),
                ElementsAre(FieldsAre(other, begins, _),
                            FieldsAre(other, displayChange::remove | wentOff, _),
                            FieldsAre(monitor, begins, _),
                            FieldsAre(monitor, displayChange::remove | wentOff, _)));
}

TEST_F(MacReconfigurationReportsTest, EachCallbackIsCalledWithItsOwnUserInfoUntilItIsRemoved) {
    Listener listener(reports);
    { Listener removed(reports); }

    server.setDisplayEnabled(monitor, false);

    EXPECT_EQ(listener.take().size(), 2U);
}

TEST_F(MacReconfigurationReportsTest, ARefusedRegistrationGivesItsStatus) {
    refuse(&simulatedMac::Refusals::registerCallback, 1002);

    EXPECT_EQ(reports.registerCallback(&ignore, nullptr), 1002);
    EXPECT_THAT(takeCalls(), ElementsAre("CGDisplayRegisterReconfigurationCallback"));
}

TEST_F(MacReconfigurationReportsTest, RemovingWhatIsNotRegisteredGivesTheServersStatus) {
    EXPECT_EQ(reports.removeCallback(&ignore, nullptr), notRegistered);
    EXPECT_THAT(takeCalls(), ElementsAre("CGDisplayRemoveReconfigurationCallback"));
}

TEST_F(MacReconfigurationReportsTest, RemovingWaitsForACallThatIsRunning) {
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
            // Is set in time only if nobody waits for this call.
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

TEST_F(MacReconfigurationReportsTest, ACallbackMayRemoveItself) {
    struct Once {
        ReconfigurationReports& reports;
        int calls = 0;

        static void callback(DisplayID, std::uint32_t, void* userInfo) {
            auto& self = *static_cast<Once*>(userInfo);
            ++self.calls;
            EXPECT_EQ(self.reports.removeCallback(&Once::callback, userInfo), 0);
        }
    } once{reports};
    ASSERT_EQ(reports.registerCallback(&Once::callback, &once), 0);

    server.setDisplayEnabled(monitor, false);

    EXPECT_EQ(once.calls, 1);
}

}  // namespace
}  // namespace tavrel
