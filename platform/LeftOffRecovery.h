#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"

namespace tavrel {

/// Switches on what an earlier run of the application has left off. That happens only when
/// application and watchdog were killed together; but then some desktops keep a display off for
/// good.
///
/// It is done once, when the server is first made to look for monitors: before the displays are
/// listed for the first time, so that they are listed as they are by then. A server that can't say
/// then what there is, is asked again the next time; but what was left off is settled at the first
/// look, before anybody can have switched off something else in this run.
class LeftOffRecovery final : public DisplayQueries {
public:
    /// The displays that this application, and no other program, has switched off and not on again.
    using LeftOff = std::function<std::vector<DisplayID>()>;

    /// Both must outlive it. `leftOff` is called on the thread of the first look.
    LeftOffRecovery(DisplaySwitch& displaySwitch, DisplayQueries& queries, LeftOff leftOff)
        : switch_(displaySwitch), queries_(queries), leftOff_(std::move(leftOff)) {}

    std::unique_ptr<DisplayMoment> now() override { return queries_.now(); }
    std::unique_ptr<DisplayMoment> lately() override { return queries_.lately(); }
    /// Blocks until what was left off is on, or was refused. What isn't connected stays for
    /// another run.
    std::unique_ptr<DisplayMoment> nowAfterProbing() override;

private:
    /// Returns false when the server couldn't say what there is.
    bool recover(const std::vector<DisplayID>& leftOff);

    DisplaySwitch& switch_;
    DisplayQueries& queries_;
    const LeftOff leftOff_;
    std::mutex mutex_;
    /// What is still to be switched on. std::nullopt before the first look.
    std::optional<std::vector<DisplayID>> awaited_;
};

}  // namespace tavrel
