#pragma once

#include "tests/bench/Desk.h"
#include "tests/support/AppWindow.h"
#include "tests/support/Pointer.h"

namespace tavrel::bench {

/// The monitor that is switched off and on: the one in the middle, so that the others and the
/// screen's size stay as they are.
inline constexpr const char* switchedOutput = "DUMMY1";

/// Clicks on the switch of `switchedOutput` in the application's window.
class SwitchClicks {
public:
    /// Both must outlive it. Blocks for some seconds: where the switch is in the window, another
    /// run of the application tells, by means of assistive technology.
    SwitchClicks(const Desk& desk, RunningApplication& application);

    /// Blocks until the window is at rest; then all that is missing of a click is `release`.
    void press();
    void release() const { pointer_.release(); }

private:
    const Desk& desk_;
    RunningApplication& application_;
    /// From the window's corner.
    const support::Bounds place_;
    support::Pointer pointer_;
};

}  // namespace tavrel::bench
