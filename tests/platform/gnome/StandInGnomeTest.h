#pragma once

#include <gmock/gmock.h>

#include <chrono>
#include <string>

#include "platform/gnome/GnomeWindowServer.h"
#include "platform/layout/RememberedOutputs.h"
#include "tests/platform/DisplayAt.h"
#include "tests/platform/gnome/StandInGnome.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/Janitor.h"
#include "tests/support/MessageBus.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel {

/// A window server of ours at one that does what it is told to, on a bus of its own.
class StandInGnomeTest : public testing::Test {
protected:
    GnomeOptions options() const {
        return {.busAddress = bus.address(), .timeout = std::chrono::milliseconds(2000)};
    }
    GnomeWindowServer anotherProcess() { return GnomeWindowServer(store, options()); }

    DisplayID idAt(const std::string& connector) { return displayAt(server, connector); }
    gnome::Monitor monitorAt(const std::string& connector) {
        return *gnome.state().monitor(connector);
    }
    layout::Memory remembered() { return layout::RememberedOutputs(store).all(); }

    support::TemporaryFolder folder;
    support::Janitor janitor{folder.path()};
    support::MessageBus bus{folder.path(), "bus", janitor};
    StandInGnome gnome{bus.address()};
    SimulatedUserDefaults store;
    GnomeWindowServer server{store, options()};
};

}  // namespace tavrel
