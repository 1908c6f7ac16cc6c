#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <utility>

#include "watchdog/application/RunningWatchdog.h"

namespace tavrel::watchdog {

/// How the application uses the connections of its watchdogs. For any thread.
struct LinkUse {
    std::atomic<int> heartbeats = 0;
    /// How often it was looked, without waiting, whether there is anything to hear.
    std::atomic<int> looks = 0;
};

/// A watchdog whose connection's use is counted.
class CountedWatchdog : public RunningWatchdog, private MessageChannel {
public:
    /// `use` must outlive it.
    CountedWatchdog(std::unique_ptr<RunningWatchdog> inner, LinkUse& use)
        : inner_(std::move(inner)), use_(use) {}

    MessageChannel& link() override { return *this; }
    int descriptor() const override { return inner_->descriptor(); }
    void dismiss() override { inner_->dismiss(); }
    void kill() override { inner_->kill(); }

private:
    bool send(const Message& message) override {
        use_.heartbeats += message.kind == Message::Kind::heartbeat ? 1 : 0;
        return inner_->link().send(message);
    }
    Received receive(std::chrono::milliseconds timeout) override {
        use_.looks += timeout == std::chrono::milliseconds::zero() ? 1 : 0;
        return inner_->link().receive(timeout);
    }
    void hangUp() override { inner_->link().hangUp(); }

    const std::unique_ptr<RunningWatchdog> inner_;
    LinkUse& use_;
};

}  // namespace tavrel::watchdog
