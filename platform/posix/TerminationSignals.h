#pragma once

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
    int descriptor() const { return readEnd_; }

private:
    int readEnd_ = -1;
    int writeEnd_ = -1;
};

}  // namespace tavrel
