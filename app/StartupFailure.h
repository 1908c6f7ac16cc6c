#pragma once

#include <QtGlobal>

namespace tavrel {

/// While it exists, a toolkit that cannot start because there is no display server ends
/// the process with one plain line and status 1 instead of an abort and a core dump. For
/// the time until the application object exists; one at a time, main thread only.
class StartupFailure {
public:
    StartupFailure();
    ~StartupFailure();

    StartupFailure(const StartupFailure&) = delete;
    StartupFailure& operator=(const StartupFailure&) = delete;

private:
    QtMessageHandler previous_;
};

}  // namespace tavrel
