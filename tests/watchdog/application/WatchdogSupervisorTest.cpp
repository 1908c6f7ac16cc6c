#include "watchdog/application/WatchdogSupervisor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/watchdog/application/SerialSwitch.h"
#include "tests/watchdog/application/ThreadWatchdog.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Kind = Message::Kind;

/// A guard that only says what it was told to, whatever is asked.
class PuppetWatchdog : public RunningWatchdog {
public:
    PuppetWatchdog(const std::vector<Message>& says, int& killed)
        : PuppetWatchdog(says, killed, makeSocketPair()) {}

    MessageSocket& link() override { return link_; }
    void kill() override { ++killed_; }

    void say(const Message& message) { theirs_.send(message); }

private:
    using Ends = std::optional<std::pair<FileDescriptor, FileDescriptor>>;
    PuppetWatchdog(const std::vector<Message>& says, int& killed, Ends ends)
        : killed_(killed),
          link_(std::move(ends.value().first)),
          theirs_(std::move(ends.value().second)) {
        for (const Message& message : says) {
            say(message);
        }
    }

    int& killed_;
    MessageSocket link_;
    MessageSocket theirs_;
};

class WatchdogSupervisorTest : public testing::Test {
protected:
    WatchdogSupervisorTest() {
        for (const DisplayID id : {1U, 2U, 3U}) {
            server.connect({.id = id});
        }
    }

    WatchdogSupervisor& keeper() {
        if (!keeper_) {
            keeper_.emplace(inner, SupervisorSetup{.startWatchdog = [this] { return start(); },
                                                   .now = [this] { return now; },
                                                   .answerTimeout = answerTimeout});
        }
        return *keeper_;
    }

    /// The application ends without a goodbye.
    void endWithoutGoodbye() { keeper_.reset(); }

    std::unique_ptr<RunningWatchdog> start() {
        ++starts;
        if (starts <= failingStarts) {
            return nullptr;
        }
        if (puppetSays) {
            auto made = std::make_unique<PuppetWatchdog>(*std::exchange(puppetSays, std::nullopt),
                                                         puppetsKilled);
            puppet = made.get();
            return made;
        }
        auto guard = std::make_unique<ThreadWatchdog>(
            displays, [this](DisplayID display, bool enabled) { return fate(display, enabled); });
        latest = guard->lifeline();
        return guard;
    }

    /// On a guard's thread, while the keeper waits for it.
    Fate fate(DisplayID display, bool enabled) {
        asked.emplace_back(display, enabled);
        if (fates.empty()) {
            return Fate::lives;
        }
        const Fate next = fates.front();
        fates.pop_front();
        return next;
    }

    /// The one at work dies while nothing is asked of it, and the keeper gets to see it.
    void killIdleGuard() {
        latest->cut();
        keeper().replaceIfDead();
    }

    bool isOn(DisplayID display) const { return server.find(display)->enabled; }
    bool isInProcess() { return keeper().descriptor() < 0; }

    SimulatedWindowServer server;
    /// What guards change, and what this process does.
    SerialSwitch displays{server};
    struct Inner : SerialSwitch {
        using SerialSwitch::SerialSwitch;
        ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
            changes.emplace_back(display, enabled);
            return SerialSwitch::setDisplayEnabled(display, enabled);
        }
        std::vector<std::pair<DisplayID, bool>> changes;
    } inner{server};

    std::chrono::nanoseconds now = 1000s;
    std::chrono::milliseconds answerTimeout = 30s;
    int starts = 0;
    int failingStarts = 0;
    /// What the next guard to be started says instead of being one.
    std::optional<std::vector<Message>> puppetSays;
    int puppetsKilled = 0;
    /// Not owned; the one started last.
    PuppetWatchdog* puppet = nullptr;
    std::deque<Fate> fates;
    std::vector<std::pair<DisplayID, bool>> asked;
    /// Of the guard that was started last.
    std::shared_ptr<Lifeline> latest;

private:
    std::optional<WatchdogSupervisor> keeper_;
};

TEST_F(WatchdogSupervisorTest, theGuardSwitchesAndItsStatusComesBack) {
    EXPECT_EQ(keeper().setDisplayEnabled(1, false), 0);
    EXPECT_EQ(keeper().setDisplayEnabled(9, false), 1001);
    EXPECT_EQ(keeper().setDisplayEnabled(1, true), 0);
    EXPECT_THAT(asked, ElementsAre(Pair(1, false), Pair(9, false), Pair(1, true)));
    EXPECT_THAT(inner.changes, IsEmpty());
    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, theGuardBringsBackWhatIsOffWhenTheApplicationIsGone) {
    keeper().setDisplayEnabled(1, false);
    keeper().setDisplayEnabled(2, false);
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isOn(2));
}

TEST_F(WatchdogSupervisorTest, afterAGoodbyeTheGuardChangesNothingAndThisProcessSwitches) {
    keeper().setDisplayEnabled(1, false);
    keeper().goodbye();
    EXPECT_FALSE(isOn(1));
    EXPECT_TRUE(isInProcess());
    keeper().goodbye();
    EXPECT_EQ(keeper().setDisplayEnabled(1, true), 0);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, aGuardThatDiesIdleIsReplacedByOneThatKnowsWhatIsOff) {
    keeper().setDisplayEnabled(1, false);
    keeper().setDisplayEnabled(2, false);
    keeper().setDisplayEnabled(2, true);
    killIdleGuard();
    EXPECT_EQ(starts, 2);
    EXPECT_FALSE(isOn(1)) << "a guard's death is no reason to change the layout";
    server.takeChanges();
    endWithoutGoodbye();
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, aLivingGuardIsLeftAloneWhenLookedAfter) {
    keeper().setDisplayEnabled(1, false);
    keeper().replaceIfDead();
    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, aSwitchOnThatKilledItsGuardIsCarriedOutByTheNext) {
    keeper().setDisplayEnabled(1, false);
    for (const Fate fate : {Fate::diesBefore, Fate::diesAfter}) {
        now += 1min;
        fates = {fate};
        EXPECT_EQ(keeper().setDisplayEnabled(1, true), 0);
        EXPECT_TRUE(isOn(1));
    }
    EXPECT_EQ(starts, 3);
    EXPECT_THAT(inner.changes, IsEmpty());
}

TEST_F(WatchdogSupervisorTest, aSwitchOffThatKilledItsGuardIsTakenBackAndRefused) {
    for (const Fate fate : {Fate::diesBefore, Fate::diesAfter}) {
        now += 1min;
        asked.clear();
        fates = {fate};
        EXPECT_EQ(keeper().setDisplayEnabled(1, false), 1004);
        EXPECT_TRUE(isOn(1)) << "after a refusal the layout is as it was";
        EXPECT_THAT(asked, ElementsAre(Pair(1, false), Pair(1, true)));
    }
    EXPECT_THAT(inner.changes, IsEmpty());
}

TEST_F(WatchdogSupervisorTest, anOffOfUnknownEffectThatCannotBeTakenBackStaysRemembered) {
    fates = {Fate::diesAfter, Fate::isRefused};
    EXPECT_EQ(keeper().setDisplayEnabled(1, false), 1004);
    EXPECT_FALSE(isOn(1));
    killIdleGuard();
    EXPECT_FALSE(isOn(1));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogSupervisorTest, anOffThatWasRefusedIsForgotten) {
    fates = {Fate::isRefused};
    EXPECT_EQ(keeper().setDisplayEnabled(1, false), 1004);
    killIdleGuard();
    endWithoutGoodbye();
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WatchdogSupervisorTest, aSecondOffThatIsRefusedDoesNotForgetTheFirst) {
    fates = {Fate::lives, Fate::isRefused};
    keeper().setDisplayEnabled(1, false);
    EXPECT_EQ(keeper().setDisplayEnabled(1, false), 1004);
    killIdleGuard();
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogSupervisorTest, anOnThatIsRefusedForgetsNothing) {
    fates = {Fate::lives, Fate::isRefused};
    keeper().setDisplayEnabled(1, false);
    EXPECT_EQ(keeper().setDisplayEnabled(1, true), 1004);
    killIdleGuard();
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogSupervisorTest, afterThreeDeathsWithinTenSecondsThisProcessSwitches) {
    keeper().setDisplayEnabled(2, false);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(isInProcess()) << i;
        now += 4s;
        killIdleGuard();
    }
    EXPECT_TRUE(isInProcess());
    EXPECT_EQ(starts, 3);
    EXPECT_EQ(keeper().setDisplayEnabled(1, false), 0);
    EXPECT_EQ(keeper().setDisplayEnabled(2, true), 0);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, false), Pair(2, true)));
    keeper().replaceIfDead();
    EXPECT_EQ(starts, 3);
}

TEST_F(WatchdogSupervisorTest, deathsFurtherApartAreAllReplaced) {
    keeper();
    for (int i = 0; i < 12; ++i) {
        now += 5001ms;
        killIdleGuard();
        EXPECT_FALSE(isInProcess()) << i;
    }
    EXPECT_EQ(starts, 13);
}

TEST_F(WatchdogSupervisorTest, aSwitchOnThatKillsEveryGuardIsMadeHereInTheEnd) {
    keeper().setDisplayEnabled(1, false);
    fates = {Fate::diesBefore, Fate::diesBefore, Fate::diesBefore};
    EXPECT_EQ(keeper().setDisplayEnabled(1, true), 0);
    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isInProcess());
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, aSwitchOffThatKillsEveryGuardNeverReachesThisProcess) {
    keeper();
    fates = {Fate::diesAfter, Fate::diesBefore, Fate::diesBefore};
    EXPECT_EQ(keeper().setDisplayEnabled(1, false), 1004);
    EXPECT_TRUE(isOn(1));
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, aGuardThatCannotBeStartedCountsAsDead) {
    failingStarts = 2;
    EXPECT_EQ(keeper().setDisplayEnabled(1, false), 0);
    EXPECT_THAT(inner.changes, IsEmpty());
    EXPECT_EQ(starts, 3);
    killIdleGuard();
    EXPECT_TRUE(isInProcess()) << "the third death";
}

TEST_F(WatchdogSupervisorTest, whereNoGuardCanBeStartedThisProcessSwitches) {
    failingStarts = 1000;
    EXPECT_EQ(keeper().setDisplayEnabled(1, false), 0);
    EXPECT_FALSE(isOn(1));
    EXPECT_EQ(starts, 3);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, false)));
}

TEST_F(WatchdogSupervisorTest, anAnswerToAnotherRequestIsNoAnswer) {
    puppetSays = {{.kind = Kind::ready}, {.kind = Kind::answer, .id = 77, .status = 0}};
    keeper();
    EXPECT_EQ(keeper().setDisplayEnabled(1, true), 0);
    EXPECT_EQ(puppetsKilled, 1);
    EXPECT_EQ(starts, 2);
    EXPECT_THAT(asked, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, aGuardThatStaysSilentIsReplacedWhenPatienceEnds) {
    puppetSays = {{.kind = Kind::ready}};
    answerTimeout = 20ms;
    EXPECT_EQ(keeper().setDisplayEnabled(1, true), 0);
    EXPECT_EQ(puppetsKilled, 1) << "or it might still switch one day";
    EXPECT_EQ(starts, 2);
}

TEST_F(WatchdogSupervisorTest, aGuardThatTalksUnaskedIsReplaced) {
    for (const Message& message : {Message{.kind = Kind::answer, .id = 1},
                                   Message{.kind = Kind::goodbye}, Message{.kind = Kind::ready}}) {
        SCOPED_TRACE(static_cast<int>(message.kind));
        const int startsBefore = starts;
        endWithoutGoodbye();
        puppetSays = {{.kind = Kind::ready}, message};
        keeper().replaceIfDead();
        EXPECT_EQ(starts, startsBefore + 2);
    }
    EXPECT_EQ(puppetsKilled, 3);
}

TEST_F(WatchdogSupervisorTest, aGuardMaySayOnceThatItIsReady) {
    puppetSays = {{.kind = Kind::ready}};
    keeper().replaceIfDead();
    EXPECT_EQ(starts, 1);
    puppet->say({.kind = Kind::ready});
    keeper().replaceIfDead();
    EXPECT_EQ(starts, 2);
}

}  // namespace
}  // namespace tavrel::watchdog
