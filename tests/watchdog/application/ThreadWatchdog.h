#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "tests/watchdog/ReportedDisplays.h"
#include "watchdog/application/RunningWatchdog.h"
#include "watchdog/program/WatchdogService.h"
#include "watchdog/protocol/MessageSocket.h"

namespace tavrel::watchdog {

/// What becomes of a watchdog's switch.
enum class Outcome {
    succeeds,
    /// The server refuses with 1004.
    isRefused,
    crashesBefore,
    crashesAfter,
};

/// Kills a `ThreadWatchdog`, from any thread. May outlive it.
class KillSwitch {
public:
    explicit KillSwitch(const MessageSocket& socket) : socket_(dup(socket.descriptor())) {}

    /// What a SIGKILL is to a process.
    void kill() {
        isKilled_ = true;
        shutdown(socket_.number(), SHUT_RDWR);
    }
    bool isKilled() const { return isKilled_; }

private:
    FileDescriptor socket_;
    std::atomic<bool> isKilled_ = false;
};

/// A watchdog on a thread of this process. Since a thread cannot be killed, the connection
/// of a dead one is shut down and nothing it does has an effect any more.
class ThreadWatchdog : public RunningWatchdog, private DisplaySwitch {
public:
    using DecideOutcome = std::function<Outcome(DisplayID, bool enabled)>;

    /// `displays` must outlive it. `decideOutcome` is asked on the watchdog's thread at each
    /// switch; without it every switch succeeds.
    explicit ThreadWatchdog(DisplaySwitch& displays, DecideOutcome decideOutcome = {})
        : ThreadWatchdog(displays, std::move(decideOutcome), makeSocketPair()) {}
    ~ThreadWatchdog() override {
        isAbandoned_ = true;
        link_.reset();
        thread_.join();
    }
    ThreadWatchdog(const ThreadWatchdog&) = delete;
    ThreadWatchdog& operator=(const ThreadWatchdog&) = delete;

    MessageSocket& link() override { return *link_; }
    int descriptor() const override { return link_->descriptor(); }
    void dismiss() override { link_->send({.kind = Message::Kind::goodbye}); }
    void kill() override { killSwitch_->kill(); }

    std::shared_ptr<KillSwitch> killSwitch() const { return killSwitch_; }

private:
    using Ends = std::optional<std::pair<FileDescriptor, FileDescriptor>>;
    ThreadWatchdog(DisplaySwitch& displays, DecideOutcome decideOutcome, Ends ends)
        : displays_(displays),
          decideOutcome_(std::move(decideOutcome)),
          link_(std::in_place, std::move(ends.value().first)),
          theirs_(std::move(ends.value().second)),
          killSwitch_(std::make_shared<KillSwitch>(theirs_)),
          thread_([this] { WatchdogService(*this, queries_, theirs_, [](auto) {}).run(); }) {}

    bool canSwitch() override { return displays_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        // Tells a race detector that what follows from closing the link comes after it.
        [[maybe_unused]] const bool isAbandoned = isAbandoned_;
        const Outcome outcome = decideOutcome_ && !killSwitch_->isKilled()
                                    ? decideOutcome_(display, enabled)
                                    : Outcome::succeeds;
        if (outcome == Outcome::crashesBefore) {
            kill();
        }
        if (killSwitch_->isKilled() || outcome == Outcome::isRefused) {
            return serverStatus::cannotComplete;
        }
        const ServerStatus status = displays_.setDisplayEnabled(display, enabled);
        if (outcome == Outcome::crashesAfter) {
            kill();
        }
        return status;
    }

    DisplaySwitch& displays_;
    /// It never steps in by itself.
    ReportedDisplays queries_;
    DecideOutcome decideOutcome_;
    std::atomic<bool> isAbandoned_ = false;
    std::optional<MessageSocket> link_;
    MessageSocket theirs_;
    std::shared_ptr<KillSwitch> killSwitch_;
    std::thread thread_;
};

}  // namespace tavrel::watchdog
