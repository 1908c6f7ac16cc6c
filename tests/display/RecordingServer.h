#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"

namespace tavrel {

/// A window server that answers what it was told, even nonsense, and writes down every
/// question as it was put.
class RecordingServer : public DisplayQueries {
public:
    struct Facts {
        bool builtIn = false;
        bool online = false;
        std::uint32_t vendor = 0;
        std::uint32_t model = 0;
        std::uint32_t serial = 0;
        bool active = false;
    };

    using DisplayList = std::optional<std::vector<DisplayID>>;

    DisplayList allDisplays;
    DisplayList onlineDisplays = std::vector<DisplayID>{};
    std::map<DisplayID, Facts> facts;
    /// How many moments have been asked for.
    int moments = 0;

    std::vector<std::string> takeCalls() { return std::exchange(calls_, {}); }

    std::unique_ptr<DisplayMoment> now() override {
        ++moments;
        return std::make_unique<Moment>(*this);
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

}  // namespace tavrel
