#pragma once

#include <chrono>

#include "app/AppDelegate.h"
#include "platform/SwitchOffGate.h"

namespace tavrel {

/// The end of the application, whatever caused it: closes the switch-off gate, then does the
/// delegate's work, once, and never for longer than the limit. Main thread only.
class QuitSequence {
public:
    /// Both must outlive it.
    QuitSequence(AppDelegate& delegate, SwitchOffGate& gate) : delegate_(delegate), gate_(gate) {}

    /// Only the first call does anything. If the process has not ended `limit` after it,
    /// because the window server keeps it waiting, the process exits with status 1.
    /// The default leaves time for a watchdog that hangs, and for trying again what is refused.
    void run(std::chrono::milliseconds limit = std::chrono::seconds(10));

private:
    AppDelegate& delegate_;
    SwitchOffGate& gate_;
    bool hasRun_ = false;
};

}  // namespace tavrel
