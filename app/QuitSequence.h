#pragma once

#include <chrono>

#include "app/AppDelegate.h"
#include "platform/SwitchOffGate.h"

namespace tavrel {

/// The end of the application, however it came: nothing goes off any more, then the
/// delegate's own work, once, and never for longer than the limit. Main thread only.
class QuitSequence {
public:
    /// Both must outlive it.
    QuitSequence(AppDelegate& delegate, SwitchOffGate& gate) : delegate_(delegate), gate_(gate) {}

    /// Does the work on the first call and nothing on any other. If the window server
    /// keeps it waiting past `limit`, counted from the first call to the end of the
    /// process, the process ends there and then with status 1.
    void run(std::chrono::milliseconds limit = std::chrono::seconds(5));

private:
    AppDelegate& delegate_;
    SwitchOffGate& gate_;
    bool hasRun_ = false;
};

}  // namespace tavrel
