#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "app/AppDelegate.h"
#include "platform/SwitchOffGate.h"

namespace tavrel {

/// What the sequence asks of those who make the changes, and are still there when the application
/// is gone. None blocks but `finish`, and all but that may be called on any thread.
struct QuitHelp {
    /// These displays are to be on when the application is gone, whoever switched them off.
    std::function<void(const std::vector<DisplayID>&)> handOver;
    /// Whether somebody who will outlive the application has been told of all of them.
    std::function<bool()> isHandedOver;
    /// Grows with each change that comes to an end.
    std::function<std::uint64_t()> changesEnded;
    /// Tries again what was refused, and lets go of the helper.
    std::function<void()> finish;
};

/// The end of the application, whatever caused it: closes the switch-off gate, hands over what is
/// off, does the delegate's work, and lets the helper finish; once. Main thread only.
///
/// It may take as long as there is progress. Only when a single call hangs is it cut short: the
/// helper then does what is left when the process has gone.
class QuitSequence {
public:
    /// A rescue waits for no other change longer than this; so the delegate's work doesn't wait
    /// longer for a switch-off that is still running.
    static constexpr std::chrono::seconds longestWait{2};

    /// All must outlive `run`, and what `help` uses.
    QuitSequence(AppDelegate& delegate, SwitchOffGate& gate, QuitHelp help)
        : delegate_(delegate), gate_(gate), help_(std::move(help)) {}

    /// Only the first call does anything. If a call makes no progress for `limit`, because the
    /// window server keeps it waiting, the process exits: with status 0 when all that is left is
    /// handed over or done, otherwise with 1. The same holds for the rest of the process's life.
    /// Where no thread can be started, there is no such limit.
    void run(std::chrono::milliseconds limit = std::chrono::seconds(10));

private:
    struct Watched;
    static void endProcessWhenItHangs(const std::shared_ptr<Watched>& watched,
                                      std::chrono::milliseconds limit);

    AppDelegate& delegate_;
    SwitchOffGate& gate_;
    QuitHelp help_;
    bool hasRun_ = false;
};

}  // namespace tavrel
