#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>

#include "platform/DisplaySwitch.h"
#include "watchdog/application/RunningWatchdog.h"
#include "watchdog/protocol/SwitchedOff.h"

namespace tavrel::simulation {

/// Where a helper's process is stopped, if it is.
enum class Stop {
    nowhere,
    /// What it is asked for lies unread.
    beforeItReads,
    /// It does what it is asked for and does not get round to saying so.
    beforeItAnswers,
};

/// The application's helper as a process that can be stopped, in simulated time.
///
/// It works while somebody waits for its answer. Until then nobody could tell the difference.
class SimulatedHelper : public watchdog::RunningWatchdog, private watchdog::MessageChannel {
public:
    /// Returns when this time has passed.
    using Wait = std::function<void(std::chrono::milliseconds)>;

    /// `displays` must outlive it.
    SimulatedHelper(DisplaySwitch& displays, Wait wait, std::shared_ptr<const Stop> stop)
        : displays_(displays), wait_(std::move(wait)), stop_(std::move(stop)) {}
    /// Switches on what is off; a stopped one is ended after a while.
    ~SimulatedHelper() override { endByItself(); }

    SimulatedHelper(const SimulatedHelper&) = delete;
    SimulatedHelper& operator=(const SimulatedHelper&) = delete;

    watchdog::MessageChannel& link() override { return *this; }
    int descriptor() const override { return -1; }
    void dismiss() override { endByItself(); }
    void kill() override { isGone_ = true; }

private:
    bool send(const watchdog::Message& message) override;
    watchdog::Received receive(std::chrono::milliseconds timeout) override;
    void hangUp() override { isGone_ = true; }

    void serveAll();
    void serve(const watchdog::Message& message);
    ServerStatus carryOut(DisplayID display, bool enabled);
    void endByItself();

    DisplaySwitch& displays_;
    const Wait wait_;
    const std::shared_ptr<const Stop> stop_;
    bool isGone_ = false;
    std::deque<watchdog::Message> unread_;
    std::deque<watchdog::Message> said_{{.kind = watchdog::Message::Kind::ready}};
    watchdog::SwitchedOff switchedOff_;
};

}  // namespace tavrel::simulation
