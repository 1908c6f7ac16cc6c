#pragma once

#include "platform/posix/WakeUp.h"

namespace tavrel {

/// Turns SIGTERM, SIGINT and SIGHUP into something a main loop can wait for.
///
/// Signal dispositions belong to the process, so at most one of these may exist at a
/// time. Main thread only.
class TerminationSignals {
public:
    TerminationSignals();
    /// Gives the signals their default effect back.
    ~TerminationSignals();

    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// Becomes readable when the first of the signals arrives and stays so.
    int descriptor() const { return signalArrived_.descriptor(); }

private:
    WakeUp signalArrived_;
};

}  // namespace tavrel
