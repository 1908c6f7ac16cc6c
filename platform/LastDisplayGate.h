#pragma once

#include <mutex>

#include "platform/DisplaySwitch.h"

namespace tavrel {

class DisplayQueries;

/// A switch that keeps the last usable display on by the word of `queries`, which may know
/// more than the window server does: that a lid is closed, for one.
///
/// Requests to switch off are carried out one at a time, each decided by what the one before
/// has left. Those to switch on wait for nobody.
class LastDisplayGate final : public DisplaySwitch {
public:
    /// Both must outlive it.
    LastDisplayGate(DisplaySwitch& inner, DisplayQueries& queries)
        : inner_(inner), queries_(queries) {}

    bool canSwitch() override { return inner_.canSwitch(); }
    /// A request to switch off returns 1004, without reaching the server, when no other display
    /// is online and active. While the server cannot say, it is left to decide itself.
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

private:
    bool isLast(DisplayID display);

    DisplaySwitch& inner_;
    DisplayQueries& queries_;
    std::mutex mutex_;
};

}  // namespace tavrel
