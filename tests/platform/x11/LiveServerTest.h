#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/layout/Identity.h"
#include "platform/x11/X11WindowServer.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel {

/// A window server of ours at a real X server with three monitors side by side.
class LiveServerTest : public testing::Test {
protected:
    explicit LiveServerTest(const support::VirtualDesktop::Options& options = {})
        : desktop(options), server(store, {.displayName = desktop.displayName()}) {}

    /// The dummy driver's monitors have no EDID.
    static DisplayID idOf(const std::string& output) {
        return layout::stableHash(output + "/0/0/0");
    }

    std::vector<DisplayID> displayList() {
        return server.now()->allDisplays().value_or(std::vector<DisplayID>{});
    }

    support::VirtualDesktop desktop;
    support::OtherClient other = desktop.otherClient();
    SimulatedUserDefaults store;
    X11WindowServer server;
};

}  // namespace tavrel
