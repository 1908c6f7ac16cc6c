#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "display/DisplayIntegration.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "registry/DisplayRegistry.h"
#include "tests/display/RecordingServer.h"
#include "tests/support/SettableClock.h"

namespace tavrel {

/// An enumeration over a recording server and a registry in memory.
class DisplayIntegrationTest : public testing::Test {
protected:
    std::vector<DisplayDevice> fetch() {
        return DisplayIntegration::fetchDisplays(server_, store_, clock_);
    }

    /// The identifiers of what is fetched, in order.
    std::vector<DisplayID> fetchIDs() {
        std::vector<DisplayID> ids;
        for (const DisplayDevice& display : fetch()) {
            ids.push_back(display.displayID());
        }
        return ids;
    }

    /// What is fetched, one line for each display: its number, name and whether it is on.
    std::vector<std::string> fetchLines() {
        std::vector<std::string> lines;
        for (const DisplayDevice& display : fetch()) {
            lines.push_back(display.id() + ": " + display.name() + (display.isOn ? " on" : " off"));
        }
        return lines;
    }

    /// Puts displays on the desk: in the list of all, online and active.
    void connect(const std::vector<DisplayID>& ids) {
        auto all = server_.allDisplays.value_or(std::vector<DisplayID>{});
        for (const DisplayID id : ids) {
            all.push_back(id);
            server_.facts[id].online = true;
            server_.facts[id].active = true;
        }
        server_.allDisplays = all;
    }
    void connectBuiltIn(DisplayID id) {
        connect({id});
        server_.facts[id].builtIn = true;
    }

    /// Makes the registry remember displays that are not there.
    void remember(const std::vector<DisplayID>& ids, bool builtIn = false) {
        for (const DisplayID id : ids) {
            RecordingServer server;
            server.facts[id].builtIn = builtIn;
            DisplayRegistry::merge({id}, store_, *server.now(), clock_);
        }
    }

    RecordingServer server_;
    SimulatedUserDefaults store_;
    SettableClock clock_;
};

}  // namespace tavrel
