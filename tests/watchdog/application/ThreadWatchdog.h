#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "watchdog/application/RunningWatchdog.h"
#include "watchdog/program/WatchdogService.h"

namespace tavrel::watchdog {

/// How far a guard gets with a switch.
enum class Fate {
    lives,
    /// The server refuses with 1004.
    isRefused,
    diesBefore,
    diesAfter,
};

/// The thread by which a guard's life hangs. May outlive it.
class Lifeline {
public:
    explicit Lifeline(const MessageSocket& socket) : socket_(dup(socket.descriptor())) {}

    /// From any thread: what a SIGKILL would be.
    void cut() {
        isCut_ = true;
        shutdown(socket_.number(), SHUT_RDWR);
    }
    bool isCut() const { return isCut_; }

private:
    FileDescriptor socket_;
    std::atomic<bool> isCut_ = false;
};

/// A guard on a thread of this process. Since a thread cannot be killed, a dead one's
/// connection is cut and nothing it does has an effect any more.
class ThreadWatchdog : public RunningWatchdog, private DisplaySwitch {
public:
    using DecideFate = std::function<Fate(DisplayID, bool enabled)>;

    /// `displays` must outlive it. `decideFate` is asked on the guard's thread at each
    /// switch; without it the guard lives.
    explicit ThreadWatchdog(DisplaySwitch& displays, DecideFate decideFate = {})
        : ThreadWatchdog(displays, std::move(decideFate), makeSocketPair()) {}
    ~ThreadWatchdog() override {
        isAbandoned_ = true;
        link_.reset();
        thread_.join();
    }
    ThreadWatchdog(const ThreadWatchdog&) = delete;
    ThreadWatchdog& operator=(const ThreadWatchdog&) = delete;

    MessageSocket& link() override { return *link_; }

    void kill() override { lifeline_->cut(); }

    std::shared_ptr<Lifeline> lifeline() const { return lifeline_; }

private:
    using Ends = std::optional<std::pair<FileDescriptor, FileDescriptor>>;
    ThreadWatchdog(DisplaySwitch& displays, DecideFate decideFate, Ends ends)
        : displays_(displays),
          decideFate_(std::move(decideFate)),
          link_(std::in_place, std::move(ends.value().first)),
          theirs_(std::move(ends.value().second)),
          lifeline_(std::make_shared<Lifeline>(theirs_)),
          thread_([this] { WatchdogService(*this, theirs_, [](auto) {}).run(); }) {}

    bool canSwitch() override { return displays_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        // What was done before the link was closed comes before what that leads to here; a
        // race detector sees it by this only.
        [[maybe_unused]] const bool isAbandoned = isAbandoned_;
        const Fate fate =
            decideFate_ && !lifeline_->isCut() ? decideFate_(display, enabled) : Fate::lives;
        if (fate == Fate::diesBefore) {
            lifeline_->cut();
        }
        if (lifeline_->isCut() || fate == Fate::isRefused) {
            return serverStatus::cannotComplete;
        }
        const ServerStatus status = displays_.setDisplayEnabled(display, enabled);
        if (fate == Fate::diesAfter) {
            lifeline_->cut();
        }
        return status;
    }

    DisplaySwitch& displays_;
    DecideFate decideFate_;
    std::atomic<bool> isAbandoned_ = false;
    std::optional<MessageSocket> link_;
    MessageSocket theirs_;
    std::shared_ptr<Lifeline> lifeline_;
    std::thread thread_;
};

}  // namespace tavrel::watchdog
