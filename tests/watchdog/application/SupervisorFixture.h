#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/watchdog/ReportedDisplays.h"
#include "tests/watchdog/application/SerialSwitch.h"
#include "tests/watchdog/application/ThreadWatchdog.h"
#include "watchdog/application/WatchdogSupervisor.h"
#include "watchdog/protocol/MessageSocket.h"

namespace tavrel::watchdog {

/// A watchdog that only says what it was told to, whatever is asked.
class PuppetWatchdog : public RunningWatchdog {
public:
    /// How often that was done to puppets.
    struct Ends {
        int killed = 0;
        int dismissed = 0;
    };

    PuppetWatchdog(const std::vector<Message>& says, Ends& ends)
        : PuppetWatchdog(says, ends, makeSocketPair()) {}

    MessageSocket& link() override { return link_; }
    int descriptor() const override { return link_.descriptor(); }
    void dismiss() override { ++ends_.dismissed; }
    void kill() override { ++ends_.killed; }

    /// What it was told next; std::nullopt when that is nothing.
    std::optional<Message> hear() {
        const Received heard = theirs_.receive(std::chrono::milliseconds::zero());
        const auto* message = std::get_if<Message>(&heard);
        return message != nullptr ? std::optional(*message) : std::nullopt;
    }
    void say(const Message& message) { theirs_.send(message); }

private:
    using Sockets = std::optional<std::pair<FileDescriptor, FileDescriptor>>;
    PuppetWatchdog(const std::vector<Message>& says, Ends& ends, Sockets sockets)
        : ends_(ends),
          link_(std::move(sockets.value().first)),
          theirs_(std::move(sockets.value().second)) {
        for (const Message& message : says) {
            say(message);
        }
    }

    Ends& ends_;
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
            supervisor_.emplace(
                inner, reported,
                SupervisorSetup{.startWatchdog = [this](const auto& first) { return start(first); },
                                .now = [this] { return now; },
                                .stopwatch = stopwatch,
                                .pause = [this](std::chrono::milliseconds time) { pause(time); },
                                .answerTimeout = answerTimeout,
                                .urgentTimeout = urgentTimeout});
            supervisor_->start();
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
    /// One that has nothing to say but that it is ready.
    void startPuppet() {
        puppetSays = {{.kind = Message::Kind::ready}};
        supervisor();
    }

    void pause(std::chrono::milliseconds time) {
        paused += time;
        inner.refusals -= inner.refusals > 0 ? 1 : 0;
    }

    bool isInProcess() { return supervisor().descriptor() < 0; }

    SimulatedWindowServer server;
    /// What watchdogs change, and what this process does.
    SerialSwitch displays{server};
    struct Inner : SerialSwitch {
        using SerialSwitch::SerialSwitch;
        ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
            changes.emplace_back(display, enabled);
            if (refusals > 0) {
                return refusal;
            }
            return SerialSwitch::setDisplayEnabled(display, enabled);
        }
        std::vector<std::pair<DisplayID, bool>> changes;
        /// How many pauses it takes until it changes anything.
        int refusals = 0;
        ServerStatus refusal = serverStatus::cannotComplete;
    } inner{server};
    struct Questions : ReportedDisplays {
        std::unique_ptr<DisplayMoment> now() override {
            whenAsked();
            return ReportedDisplays::now();
        }
        std::function<void()> whenAsked = [] {};
    } reported;

    std::chrono::nanoseconds now = std::chrono::seconds(1000);
    /// By which answers are waited for.
    MonotonicClock stopwatch = steadyTime;
    std::chrono::milliseconds answerTimeout = std::chrono::seconds(30);
    std::chrono::milliseconds urgentTimeout = std::chrono::seconds(30);
    std::chrono::milliseconds paused{0};
    int starts = 0;
    int failingStarts = 0;
    std::chrono::seconds betweenStarts{0};
    /// What the next watchdog to be started says instead of serving.
    std::optional<std::vector<Message>> puppetSays;
    PuppetWatchdog::Ends puppets;
    /// Not owned; the one started last.
    PuppetWatchdog* puppet = nullptr;
    /// Of the next requests; later ones succeed.
    std::deque<Outcome> outcomes;
    /// What watchdogs were asked for.
    std::vector<std::pair<DisplayID, bool>> requests;

private:
    std::unique_ptr<RunningWatchdog> start(const std::vector<Message>& first) {
        ++starts;
        now += betweenStarts;
        if (starts <= failingStarts) {
            return nullptr;
        }
        if (puppetSays) {
            auto made =
                std::make_unique<PuppetWatchdog>(*std::exchange(puppetSays, std::nullopt), puppets);
            puppet = made.get();
            sendAll(made->link(), first);
            return made;
        }
        auto started = std::make_unique<ThreadWatchdog>(
            displays,
            [this](DisplayID display, bool enabled) { return outcomeOf(display, enabled); });
        latest_ = started->killSwitch();
        sendAll(started->link(), first);
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

}  // namespace tavrel::watchdog
