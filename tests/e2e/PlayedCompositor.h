#pragma once

#include <glib.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/gnome/StandInGnome.h"
#include "tests/platform/plasma/StandInPlasma.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/MonitorFacts.h"

namespace tavrel::e2e {

/// A compositor with three monitors side by side at DP-1 to DP-3, each of its own kind, that does
/// what a test says.
class PlayedCompositor {
public:
    virtual ~PlayedCompositor() = default;

    /// What tells the application which compositor there is.
    virtual support::Environment environment() const = 0;

    struct Shown {
        std::string connector;
        bool isOn = false;
        int x = 0;
    };
    virtual std::vector<Shown> monitors() = 0;

    virtual void unplug(const std::string& connector) = 0;
    /// Plugs the one that was unplugged last in here. It stays off.
    virtual void plugAgain(const std::string& connector) = 0;
    /// Answers the next request for a change with an error.
    virtual void failNext() = 0;
};

class PlayedGnome final : public PlayedCompositor {
public:
    explicit PlayedGnome(const std::string& busAddress) : gnome_(busAddress) {}

    support::Environment environment() const override { return {{"WAYLAND_DISPLAY", ""}}; }
    std::vector<Shown> monitors() override {
        std::vector<Shown> shown;
        const gnome::MonitorState state = gnome_.state();
        for (const gnome::Monitor& monitor : state.monitors) {
            shown.push_back({.connector = monitor.connector});
            for (const gnome::LogicalMonitor& each : state.logicalMonitors) {
                if (each.monitors.front() == monitor.connector) {
                    shown.back().isOn = true;
                    shown.back().x = each.x;
                }
            }
        }
        return shown;
    }
    void unplug(const std::string& connector) override {
        unplugged_ = *gnome_.state().monitor(connector);
        gnome_.unplug(connector);
    }
    void plugAgain(const std::string& connector) override {
        unplugged_.connector = connector;
        gnome_.plugOff(unplugged_);
    }
    void failNext() override { gnome_.answerNext({StandInGnome::Answer::fail}); }

private:
    StandInGnome gnome_;
    gnome::Monitor unplugged_;
};

class PlayedPlasma final : public PlayedCompositor {
public:
    PlayedPlasma() {
        for (int i = 0; i < 3; ++i) {
            StandInPlasma::Output output{.name = "DP-" + std::to_string(i + 1),
                                         .edid = edidWithSerial(static_cast<std::uint32_t>(i + 1))};
            output.x = i * 1920;
            output.priority = static_cast<std::uint32_t>(i + 1);
            plasma_.plug(output);
        }
    }

    support::Environment environment() const override {
        return {{"WAYLAND_DISPLAY", plasma_.displayName()}};
    }
    std::vector<Shown> monitors() override {
        std::vector<Shown> shown;
        for (const StandInPlasma::Output& output : plasma_.outputs()) {
            shown.push_back({output.name, output.isEnabled, output.x});
        }
        return shown;
    }
    void unplug(const std::string& connector) override {
        unplugged_ = plasma_.output(connector);
        plasma_.unplug(connector);
        // As a hot plug may.
        plasma_.dropClients();
    }
    void plugAgain(const std::string& connector) override {
        unplugged_.name = connector;
        unplugged_.isEnabled = false;
        plasma_.plug(unplugged_);
    }
    void failNext() override { plasma_.answerNext({StandInPlasma::Answer::fail}); }

private:
    /// As the protocol has it.
    static std::string edidWithSerial(std::uint32_t serial) {
        const std::vector<std::uint8_t> edid = support::edidOf({.serial = serial});
        const std::unique_ptr<char, decltype(&g_free)> text(
            g_base64_encode(edid.data(), edid.size()), &g_free);
        return text.get();
    }

    StandInPlasma plasma_{0};
    StandInPlasma::Output unplugged_;
};

}  // namespace tavrel::e2e
