#pragma once

#include <string>

#include "tests/bench/Clock.h"
#include "tests/support/CrtcSwitches.h"

namespace tavrel::bench {

/// Sees when an X server switches a monitor off or on, whoever asked it to.
class LayoutWatch {
public:
    explicit LayoutWatch(const std::string& displayName) : switches_(displayName) {}

    /// What has happened until now does not count.
    void forget();

    /// When the server says that one has gone off, or come on. Blocks until it does; throws
    /// std::runtime_error when it never does.
    Time awaitSwitch(bool on);

private:
    support::CrtcSwitches switches_;
};

}  // namespace tavrel::bench
