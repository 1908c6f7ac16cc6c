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

/// A watchdog that only says what it was told to, whatever is asked.
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

    /// Made at the first call.
    WatchdogSupervisor& supervisor() {
        if (!supervisor_) {
            supervisor_.emplace(inner, SupervisorSetup{.startWatchdog = [this] { return start(); },
                                                       .now = [this] { return now; },
                                                       .answerTimeout = answerTimeout});
        }
        return *supervisor_;
    }

    ServerStatus switchOff(DisplayID display) {
        return supervisor().setDisplayEnabled(display, false);
    }
    ServerStatus switchOn(DisplayID display) {
        return supervisor().setDisplayEnabled(display, true);
    }

    /// The application ends without a goodbye.
    void endWithoutGoodbye() { supervisor_.reset(); }

    /// The watchdog dies while nothing is asked of it, and the supervisor notices.
    void killIdleWatchdog() {
        latest_->kill();
        supervisor().replaceIfDead();
    }

    bool isOn(DisplayID display) const { return server.find(display)->enabled; }
    bool isInProcess() { return supervisor().descriptor() < 0; }

    SimulatedWindowServer server;
    /// What watchdogs change, and what this process does.
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
    /// What the next watchdog to be started says instead of serving.
    std::optional<std::vector<Message>> puppetSays;
    int puppetsKilled = 0;
    /// Not owned; the one started last.
    PuppetWatchdog* puppet = nullptr;
    /// Of the next requests; later ones succeed.
    std::deque<Outcome> outcomes;
    /// What watchdogs were asked for.
    std::vector<std::pair<DisplayID, bool>> requests;

private:
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
        auto started = std::make_unique<ThreadWatchdog>(
            displays,
            [this](DisplayID display, bool enabled) { return outcomeOf(display, enabled); });
        latest_ = started->killSwitch();
        return started;
    }

    /// On a watchdog's thread, while the supervisor waits for it.
    Outcome outcomeOf(DisplayID display, bool enabled) {
        requests.emplace_back(display, enabled);
        if (outcomes.empty()) {
            return Outcome::succeeds;
        }
        const Outcome next = outcomes.front();
        outcomes.pop_front();
        return next;
    }

    /// Of the watchdog that was started last.
    std::shared_ptr<KillSwitch> latest_;
    std::optional<WatchdogSupervisor> supervisor_;
};

TEST_F(WatchdogSupervisorTest, TheWatchdogSwitchesAndItsStatusIsReturned) {
    EXPECT_EQ(switchOff(1), 0);
    EXPECT_EQ(switchOff(9), 1001);
    EXPECT_EQ(switchOn(1), 0);

    EXPECT_THAT(requests, ElementsAre(Pair(1, false), Pair(9, false), Pair(1, true)));
    EXPECT_THAT(inner.changes, IsEmpty());
    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, TheWatchdogBringsBackWhatIsOffWhenTheApplicationIsGone) {
    switchOff(1);
    switchOff(2);

    endWithoutGoodbye();

    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isOn(2));
}

TEST_F(WatchdogSupervisorTest, AfterAGoodbyeTheWatchdogChangesNothingAndThisProcessSwitches) {
    switchOff(1);

    supervisor().goodbye();

    EXPECT_FALSE(isOn(1));
    EXPECT_TRUE(isInProcess());
    supervisor().goodbye();
    EXPECT_EQ(switchOn(1), 0);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, AWatchdogThatDiesIdleIsReplacedByOneThatKnowsWhatIsOff) {
    switchOff(1);
    switchOff(2);
    switchOn(2);

    killIdleWatchdog();

    EXPECT_EQ(starts, 2);
    EXPECT_FALSE(isOn(1)) << "the end of a watchdog is no reason to change the layout";
    server.takeChanges();
    endWithoutGoodbye();
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, ARunningWatchdogIsNotReplaced) {
    switchOff(1);

    supervisor().replaceIfDead();

    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, ASwitchOnDuringWhichTheWatchdogCrashesIsMadeByTheNext) {
    switchOff(1);
    for (const Outcome outcome : {Outcome::crashesBefore, Outcome::crashesAfter}) {
        now += 1min;
        outcomes = {outcome};

        EXPECT_EQ(switchOn(1), 0);

        EXPECT_TRUE(isOn(1));
    }
    EXPECT_EQ(starts, 3);
    EXPECT_THAT(inner.changes, IsEmpty());
}

TEST_F(WatchdogSupervisorTest, ASwitchOffDuringWhichTheWatchdogCrashesIsUndoneAndRefused) {
    for (const Outcome outcome : {Outcome::crashesBefore, Outcome::crashesAfter}) {
        now += 1min;
        requests.clear();
        outcomes = {outcome};

        EXPECT_EQ(switchOff(1), 1004);

        EXPECT_TRUE(isOn(1)) << "after a refusal the layout is as it was";
        EXPECT_THAT(requests, ElementsAre(Pair(1, false), Pair(1, true)));
    }
    EXPECT_THAT(inner.changes, IsEmpty());
}

TEST_F(WatchdogSupervisorTest, AFailedSwitchOffThatCannotBeUndoneIsRemembered) {
    outcomes = {Outcome::crashesAfter, Outcome::isRefused};

    EXPECT_EQ(switchOff(1), 1004);

    EXPECT_FALSE(isOn(1));
    killIdleWatchdog();
    EXPECT_FALSE(isOn(1));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogSupervisorTest, ASwitchOffThatWasRefusedIsForgotten) {
    outcomes = {Outcome::isRefused};

    EXPECT_EQ(switchOff(1), 1004);

    killIdleWatchdog();
    endWithoutGoodbye();
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WatchdogSupervisorTest, AfterARefusalOfAnyKindADisplayThatIsOffIsRemembered) {
    for (const bool enabled : {false, true}) {
        outcomes = {Outcome::succeeds, Outcome::isRefused};
        switchOff(1);

        EXPECT_EQ(supervisor().setDisplayEnabled(1, enabled), 1004);

        killIdleWatchdog();
        endWithoutGoodbye();
        EXPECT_TRUE(isOn(1)) << enabled;
    }
}

TEST_F(WatchdogSupervisorTest, AfterThreeCrashesWithinTenSecondsThisProcessSwitches) {
    switchOff(2);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(isInProcess()) << i;
        now += 4s;
        killIdleWatchdog();
    }

    EXPECT_TRUE(isInProcess());
    EXPECT_EQ(switchOff(1), 0);
    EXPECT_EQ(switchOn(2), 0);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, false), Pair(2, true)));
    supervisor().replaceIfDead();
    EXPECT_EQ(starts, 3);
}

TEST_F(WatchdogSupervisorTest, WatchdogsThatCrashNowAndThenAreAllReplaced) {
    supervisor();
    for (int i = 0; i < 12; ++i) {
        now += 5001ms;
        killIdleWatchdog();
        EXPECT_FALSE(isInProcess()) << i;
    }
    EXPECT_EQ(starts, 13);
}

TEST_F(WatchdogSupervisorTest, ASwitchOnThatCrashesEveryWatchdogIsMadeInThisProcess) {
    switchOff(1);
    outcomes = {Outcome::crashesBefore, Outcome::crashesBefore, Outcome::crashesBefore};

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isInProcess());
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, ASwitchOffThatCrashesEveryWatchdogIsNeverMadeInThisProcess) {
    outcomes = {Outcome::crashesAfter, Outcome::crashesBefore, Outcome::crashesBefore};

    EXPECT_EQ(switchOff(1), 1004);

    EXPECT_TRUE(isOn(1));
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, AWatchdogThatCannotBeStartedCountsAsACrash) {
    failingStarts = 2;

    EXPECT_EQ(switchOff(1), 0);

    EXPECT_THAT(inner.changes, IsEmpty());
    EXPECT_EQ(starts, 3);
    killIdleWatchdog();
    EXPECT_TRUE(isInProcess()) << "the third crash";
}

TEST_F(WatchdogSupervisorTest, WhereNoWatchdogCanBeStartedThisProcessSwitches) {
    failingStarts = 1000;

    EXPECT_EQ(switchOff(1), 0);

    EXPECT_FALSE(isOn(1));
    EXPECT_EQ(starts, 3);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, false)));
}

TEST_F(WatchdogSupervisorTest, AnAnswerToAnotherRequestIsNoAnswer) {
    puppetSays = {{.kind = Kind::ready}, {.kind = Kind::answer, .id = 77, .status = 0}};
    supervisor();

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_EQ(puppetsKilled, 1);
    EXPECT_EQ(starts, 2);
    EXPECT_THAT(requests, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, AWatchdogThatDoesNotAnswerInTimeIsReplaced) {
    puppetSays = {{.kind = Kind::ready}};
    answerTimeout = 20ms;

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_EQ(puppetsKilled, 1) << "or it might still switch one day";
    EXPECT_EQ(starts, 2);
}

TEST_F(WatchdogSupervisorTest, AWatchdogThatSpeaksUnaskedIsReplaced) {
    for (const Message& message : {Message{.kind = Kind::answer, .id = 1},
                                   Message{.kind = Kind::goodbye}, Message{.kind = Kind::ready}}) {
        SCOPED_TRACE(static_cast<int>(message.kind));
        const int startsBefore = starts;
        endWithoutGoodbye();
        puppetSays = {{.kind = Kind::ready}, message};

        supervisor().replaceIfDead();

        EXPECT_EQ(starts, startsBefore + 2);
    }
    EXPECT_EQ(puppetsKilled, 3);
}

TEST_F(WatchdogSupervisorTest, AWatchdogMaySayOnceThatItIsReady) {
    puppetSays = {{.kind = Kind::ready}};
    supervisor().replaceIfDead();
    EXPECT_EQ(starts, 1);

    puppet->say({.kind = Kind::ready});
    supervisor().replaceIfDead();

    EXPECT_EQ(starts, 2);
}

}  // namespace
}  // namespace tavrel::watchdog
