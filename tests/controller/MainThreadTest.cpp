// The controller compiled with its assertions, also where the product is without them.
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/controller/ControllerTest.h"
#include "tests/controller/ForwardingMainQueue.h"

namespace tavrel {
namespace {

/// Counts who asks from another thread, and lets them pass.
class LenientMainQueue : public ForwardingMainQueue {
public:
    using ForwardingMainQueue::ForwardingMainQueue;

    bool isCurrent() const override {
        strangers_ += ForwardingMainQueue::isCurrent() ? 0 : 1;
        return true;
    }
    int takeStrangers() { return std::exchange(strangers_, 0); }

private:
    mutable int strangers_ = 0;
};

class MainThreadTest : public ControllerTest {
protected:
    struct Use {
        std::string name;
        std::function<void()> use;
    };

    std::vector<Use> everyUse() {
        DisplayController& it = *controller;
        return {
            {"displays", [&] { it.displays(); }},
            {"setDisplays", [&] { it.setDisplays({}); }},
            {"isRefreshing", [&] { it.isRefreshing(); }},
            {"setIsRefreshing", [&] { it.setIsRefreshing(false); }},
            {"statusMessage", [&] { it.statusMessage(); }},
            {"setStatusMessage", [&] { it.setStatusMessage("text"); }},
            {"errorMessage", [&] { it.errorMessage(); }},
            {"setErrorMessage", [&] { it.setErrorMessage("text"); }},
            {"refresh", [&] { it.refresh(std::nullopt); }},
            {"refresh while one is running", [&] { it.refresh(std::nullopt); }},
            {"set",
             [&] {
                 it.set({panel, "name", DisplayDevice::Kind::builtIn, true}, true);
             }},
            {"wakeAll", [&] { it.wakeAll(); }},
            {"ensureAtLeastOneUsableDisplay", [&] { it.ensureAtLeastOneUsableDisplay(); }},
            {"handleDisplayReconfiguration",
             [&] { it.handleDisplayReconfiguration(panel, displayChange::beginConfiguration); }},
            {"scheduleTopologyRecovery", [&] { it.scheduleTopologyRecovery(); }},
            {"restoreSafeLayout", [&] { it.restoreSafeLayout("text"); }},
            {"restoreSafeLayout while one is running", [&] { it.restoreSafeLayout("text"); }},
            {"displayCallbackRegistered", [&] { it.displayCallbackRegistered(); }},
            {"isAutomaticRecoveryRunning", [&] { it.isAutomaticRecoveryRunning(); }},
            {"suppressTopologyRestoreUntil", [&] { it.suppressTopologyRestoreUntil(); }},
        };
    }

    Platform lenientPlatform() {
        const Platform whole = platform();
        return {.displaySwitch = whole.displaySwitch,
                .queries = whole.queries,
                .reports = whole.reports,
                .userDefaults = whole.userDefaults,
                .wallClock = whole.wallClock,
                .mainQueue = mainQueue,
                .backgroundQueue = whole.backgroundQueue,
                .notificationCenter = whole.notificationCenter};
    }

    static void onAnotherThread(const std::function<void()>& act) { std::thread(act).join(); }

    LenientMainQueue mainQueue{scheduler.mainQueue()};
};

TEST_F(MainThreadTest, EveryUseFromAnotherThreadIsNoticed) {
    connect({panel});
    controller = DisplayController::create(lenientPlatform());
    scheduler.settle();
    mainQueue.takeStrangers();

    for (const Use& each : everyUse()) {
        onAnotherThread(each.use);
        EXPECT_GT(mainQueue.takeStrangers(), 0) << each.name;
    }

    release();
    scheduler.settle();
}

TEST_F(MainThreadTest, CreationOnAnotherThreadIsNoticed) {
    onAnotherThread([&] { controller = DisplayController::create(lenientPlatform()); });

    EXPECT_GT(mainQueue.takeStrangers(), 0);

    release();
    scheduler.settle();
}

using MainThreadDeathTest = ControllerTest;

TEST_F(MainThreadDeathTest, UseFromAnotherThreadEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    startWith({});

    EXPECT_DEATH(std::thread([&] { controller->wakeAll(); }).join(), "isCurrent");
}

}  // namespace
}  // namespace tavrel
