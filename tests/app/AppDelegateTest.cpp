#include <memory>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/AppDelegate.h"
#include "controller/DisplayController.h"
#include "controller/WakeAllNotification.h"
#include "registry/DisplayRegistry.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/support/WakeChord.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class AppDelegateTest : public testing::Test {
protected:
    static constexpr DisplayID panel = 5;
    static constexpr DisplayID external = 1;

    AppDelegateTest() {
        system.windowServer.connect({.id = panel, .builtIn = true});
        system.windowServer.connect({.id = external});
        system.notificationCenter.addObserver(wakeAllDisplays, [this] { ++posted; });
    }

    /// Makes the registry know these, in this stored order.
    void remember(const std::vector<DisplayID>& displays) {
        DisplayRegistry::merge(displays, system.userDefaults, *system.windowServer.now(),
                               system.wallClock);
    }

    SimulatedPlatform system;
    AppDelegate delegate{system.platform(), system.hotKeys};
    int posted = 0;
};

/// Notes at each switch whether the hot key still works.
class HotKeyWitness : public DisplaySwitch {
public:
    HotKeyWitness(DisplaySwitch& inner, const SimulatedHotKeys& hotKeys)
        : inner_(inner), hotKeys_(hotKeys) {}

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        worked.push_back(hotKeys_.isRegistered() && hotKeys_.hasHandler());
        return inner_.setDisplayEnabled(display, enabled);
    }

    std::vector<bool> worked;

private:
    DisplaySwitch& inner_;
    const SimulatedHotKeys& hotKeys_;
};

TEST_F(AppDelegateTest, LaunchInstallsTheHandlerAndRegistersTheChord) {
    EXPECT_THAT(system.hotKeys.requests(), IsEmpty());

    delegate.applicationDidFinishLaunching();

    EXPECT_TRUE(system.hotKeys.hasHandler());
    ASSERT_EQ(system.hotKeys.requests().size(), 1U);
    EXPECT_EQ(system.hotKeys.requests().front(), support::wakeChord);
}

TEST_F(AppDelegateTest, EachPressPostsExactlyOneNotification) {
    delegate.applicationDidFinishLaunching();
    system.hotKeys.press();
    system.scheduler.settle();

    EXPECT_EQ(posted, 1);

    system.hotKeys.press();
    system.hotKeys.press();
    system.scheduler.settle();

    EXPECT_EQ(posted, 3);
}

TEST_F(AppDelegateTest, APressWakesEveryDisplayThroughTheController) {
    delegate.applicationDidFinishLaunching();
    const auto controller = DisplayController::create(system.platform());
    system.scheduler.settle();
    system.windowServer.takeChanges();

    system.hotKeys.press();
    system.scheduler.settle();

    EXPECT_THAT(system.windowServer.takeChanges(),
                ElementsAre(Pair(panel, true), Pair(external, true)));
}

TEST_F(AppDelegateTest, AChordThatCannotBeRegisteredIsNoFailure) {
    system.hotKeys.setAcceptsHotKey(false);

    delegate.applicationDidFinishLaunching();

    EXPECT_FALSE(system.hotKeys.isRegistered());
    EXPECT_TRUE(system.hotKeys.hasHandler());

    delegate.applicationWillTerminate();

    EXPECT_FALSE(system.hotKeys.hasHandler());
}

TEST_F(AppDelegateTest, AHandlerThatCannotBeInstalledIsNoFailure) {
    system.hotKeys.setAcceptsHandler(false);

    delegate.applicationDidFinishLaunching();

    EXPECT_TRUE(system.hotKeys.isRegistered());

    delegate.applicationWillTerminate();

    EXPECT_FALSE(system.hotKeys.isRegistered());
}

TEST_F(AppDelegateTest, QuittingWithOneDisplayOffEnablesItOnce) {
    remember({panel, external});
    system.windowServer.switchFromOutside(external, false);

    delegate.applicationWillTerminate();

    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(external, true)));
    EXPECT_TRUE(system.windowServer.find(external)->enabled);
}

TEST_F(AppDelegateTest, QuittingWithAllActiveEnablesNone) {
    remember({panel, external});

    delegate.applicationWillTerminate();

    EXPECT_THAT(system.windowServer.takeChanges(), IsEmpty());
}

TEST_F(AppDelegateTest, QuittingEnablesAnOfflineDisplayTooAndIgnoresItsRefusal) {
    remember({panel, external});
    system.windowServer.disconnect(external);

    delegate.applicationWillTerminate();

    EXPECT_THAT(system.windowServer.takeChanges(), ElementsAre(Pair(external, true)));
}

TEST_F(AppDelegateTest, QuittingEnablesDisplaysInTheOrderTheyAreStored) {
    system.userDefaults.setData(DisplayRegistry::storageKey,
                                R"([{"id":5,"isBuiltIn":true,"lastSeenAt":0},)"
                                R"({"id":9,"isBuiltIn":false,"lastSeenAt":0},)"
                                R"({"id":1,"isBuiltIn":false,"lastSeenAt":0}])");
    system.windowServer.switchFromOutside(panel, false);
    system.windowServer.switchFromOutside(external, false);

    delegate.applicationWillTerminate();

    EXPECT_THAT(system.windowServer.takeChanges(),
                ElementsAre(Pair(panel, true), Pair(9, true), Pair(external, true)));
}

TEST_F(AppDelegateTest, QuittingReleasesTheHotKeyAfterTheLastDisplayIsEnabled) {
    remember({panel, external});
    system.windowServer.switchFromOutside(panel, false);
    system.windowServer.switchFromOutside(external, false);
    HotKeyWitness witness(system.windowServer, system.hotKeys);
    AppDelegate quitting(system.platform().with(witness), system.hotKeys);
    quitting.applicationDidFinishLaunching();

    quitting.applicationWillTerminate();

    EXPECT_THAT(witness.worked, ElementsAre(true, true));
    EXPECT_FALSE(system.hotKeys.isRegistered());
    EXPECT_FALSE(system.hotKeys.hasHandler());
}

TEST_F(AppDelegateTest, QuittingWithAnEmptyRegistryOnlyReleasesTheHotKey) {
    delegate.applicationDidFinishLaunching();
    delegate.applicationWillTerminate();

    EXPECT_THAT(system.windowServer.takeChanges(), IsEmpty());
    EXPECT_FALSE(system.hotKeys.isRegistered());
    EXPECT_FALSE(system.hotKeys.hasHandler());
}

}  // namespace
}  // namespace tavrel
