#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/MainQueue.h"

namespace tavrel {

/// Looks again at a rescue that was decided while the server was silent.
///
/// When nothing is usable, everything is switched on unasked. A server that has fallen silent
/// since can't say whether that is still so, and does what it is asked for when it goes on: by
/// then another program may have brought a display back, and what the user has switched off is to
/// stay off. So whoever switches on by a last word is kept waiting until the server speaks, and
/// gets 1004 for every display if one is usable then. Nothing is lost by it: while a server is
/// silent, it doesn't switch either.
///
/// A rescue shows in how it goes about it: off the main thread, it asks for a moment and switches
/// on, without asking beforehand whether displays can be switched, as is done for the user. What
/// the main thread switches, and what is asked for again after it was refused, is carried out.
class RescueReview final : public DisplaySwitch, public DisplayQueries {
public:
    /// All must outlive it.
    RescueReview(DisplaySwitch& displaySwitch, DisplayQueries& queries, const MainQueue& mainQueue)
        : switch_(displaySwitch), queries_(queries), mainQueue_(mainQueue) {}

    bool canSwitch() override;
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    std::unique_ptr<DisplayMoment> now() override;
    std::unique_ptr<DisplayMoment> lately() override;
    std::unique_ptr<DisplayMoment> nowAfterProbing() override;

private:
    /// A rescue that was decided in a silence. Each is the work of one thread.
    struct Rescue {
        bool isReviewed = false;
        bool isCalledOff = false;
        std::vector<DisplayID> withheld = {};
        /// Whether it has just asked for a switch-on: then its next question is no new beginning.
        bool isUnderWay = false;
    };

    std::unique_ptr<DisplayMoment> noted(std::unique_ptr<DisplayMoment> moment);
    bool isWithheld(DisplayID display);
    void review(Rescue& rescue);

    DisplaySwitch& switch_;
    DisplayQueries& queries_;
    const MainQueue& mainQueue_;

    /// Whether the main thread last heard, of a silent server, that nothing was usable.
    std::atomic<bool> isDecidedInSilence_ = false;
    std::mutex mutex_;
    std::map<std::thread::id, Rescue> rescues_;
};

}  // namespace tavrel
