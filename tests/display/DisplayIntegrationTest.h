#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "display/DisplayIntegration.h"
#include "registry/DisplayRegistry.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/SettableClock.h"

namespace tavrel {

/// A window server that answers what it was told, even nonsense, and records every question
/// in order.
class RecordingServer : public DisplayQueries {
public:
    struct Facts {
        bool builtIn = false;
        bool online = false;
        std::uint32_t vendor = 0;
        std::uint32_t model = 0;
        std::uint32_t serial = 0;
        bool active = false;
        DisplayHardware hardware = {};
    };

    using DisplayList = std::optional<std::vector<DisplayID>>;

    DisplayList allDisplays;
    DisplayList onlineDisplays = std::vector<DisplayID>{};
    std::map<DisplayID, Facts> facts;
    /// How many moments have been asked for.
    int moments = 0;
    /// How many of them after a look for new monitors.
    int probes = 0;

    std::vector<std::string> takeCalls() { return std::exchange(calls_, {}); }

    std::unique_ptr<DisplayMoment> now() override {
        ++moments;
        return std::make_unique<Moment>(*this);
    }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override {
        ++probes;
        return now();
    }

private:
    class Moment : public DisplayMoment {
    public:
        explicit Moment(RecordingServer& server) : server_(server) {}

        DisplayList allDisplays() override { return noted("all", server_.allDisplays); }
        DisplayList onlineDisplays() override { return noted("online", server_.onlineDisplays); }
        bool isBuiltIn(DisplayID display) override { return ask(display, "builtIn").builtIn; }
        bool isOnline(DisplayID display) override { return ask(display, "online").online; }
        bool isActive(DisplayID display) override { return ask(display, "active").active; }
        std::uint32_t vendorNumber(DisplayID display) override {
            return ask(display, "vendor").vendor;
        }
        std::uint32_t modelNumber(DisplayID display) override {
            return ask(display, "model").model;
        }
        std::uint32_t serialNumber(DisplayID display) override {
            return ask(display, "serial").serial;
        }
        DisplayHardware hardware(DisplayID display) override {
            return server_.facts[display].hardware;
        }

    private:
        const DisplayList& noted(const std::string& call, const DisplayList& list) {
            server_.calls_.push_back(call);
            return list;
        }
        const Facts& ask(DisplayID display, const std::string& question) {
            server_.calls_.push_back(question + " " + std::to_string(display));
            return server_.facts[display];
        }

        RecordingServer& server_;
    };

    std::vector<std::string> calls_;
};

/// An enumeration over a recording server and a registry in memory.
class DisplayIntegrationTest : public testing::Test {
protected:
    std::vector<DisplayDevice> fetch() {
        return DisplayIntegration::fetchDisplays(server, store, clock);
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

    /// Connects displays: they are in the list of all, online and active.
    void connect(const std::vector<DisplayID>& ids) {
        auto all = server.allDisplays.value_or(std::vector<DisplayID>{});
        for (const DisplayID id : ids) {
            all.push_back(id);
            server.facts[id].online = true;
            server.facts[id].active = true;
        }
        server.allDisplays = all;
    }
    void connectBuiltIn(DisplayID id) {
        connect({id});
        server.facts[id].builtIn = true;
    }

    /// Makes the registry remember displays that are not connected.
    void remember(const std::vector<DisplayID>& ids, bool builtIn = false) {
        for (const DisplayID id : ids) {
            RecordingServer past;
            past.facts[id].builtIn = builtIn;
            DisplayRegistry::merge({id}, store, *past.now(), clock);
        }
    }

    RecordingServer server;
    SimulatedUserDefaults store;
    SettableClock clock;
};

}  // namespace tavrel
