#pragma once

#include <QtGlobal>

namespace tavrel {

/// While it exists, a toolkit that cannot start ends the process with status 1 instead of an
/// abort and a core dump: with one plain line where that is for want of a display server, on a
/// Mac with what the toolkit itself says. For
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
