#pragma once

#include "platform/posix/WakeUp.h"

// What a process sets for itself as a whole, before it starts its first thread.

namespace tavrel {

/// Has all threads share one heap, instead of one for each that holds what it once needed, and
/// big blocks given back as soon as they are free. To be called before the first thread is
/// started. Does nothing where the system's library has no such settings.
void shareOneHeap();

/// From now on a write to a peer that has gone fails with EPIPE instead of ending this process.
/// To be called before the first connection to an X server: xcb (1.15) writes without asking for
/// that, on whichever thread it is used. Programs started from here inherit it.
void ignoreBrokenPipes();

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
