#include "tests/support/PluggedMonitors.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

constexpr const char* installedPipeWire = "/usr/bin/pipewire";

std::vector<std::string> connectorsOf(const GnomeDesktop& desktop) {
    std::vector<std::string> connectors;
    for (const GnomeDesktop::Screen& screen : desktop.screens()) {
        connectors.push_back(screen.connector);
    }
    return connectors;
}

bool contains(const std::vector<std::string>& connectors, const std::string& connector) {
    return std::find(connectors.begin(), connectors.end(), connector) != connectors.end();
}

}  // namespace

bool PluggedMonitors::isInstalled() {
    return std::filesystem::exists(installedPipeWire);
}

PluggedMonitors::PluggedMonitors(const GnomeDesktop& desktop, std::string program)
    : desktop_(desktop), program_(std::move(program)), pipeWire_(start({installedPipeWire})) {
    const std::filesystem::path folder = desktop.environment().at("XDG_RUNTIME_DIR");
    if (!waitUntil([&] {
            return !pipeWire_->isRunning() || std::filesystem::exists(folder / "pipewire-0");
        }) ||
        !pipeWire_->isRunning()) {
        throw std::runtime_error("PipeWire does not come up:\n" + messages());
    }
}

std::unique_ptr<ChildProcess> PluggedMonitors::start(const std::vector<std::string>& command) {
    ChildProcess::Options options;
    options.command = command;
    options.environment = desktop_.environment();
    options.standardError = folder_.path() / "err";
    auto process = std::make_unique<ChildProcess>(options);
    janitor_.watchGroup(process->pid());
    return process;
}

std::string PluggedMonitors::plug(int width, int height) {
    const std::vector<std::string> before = connectorsOf(desktop_);
    auto monitor =
        start({program_, desktop_.busAddress(), std::to_string(width), std::to_string(height)});
    std::string added;
    const bool isPlugged = waitUntil([&] {
        for (const std::string& connector : connectorsOf(desktop_)) {
            added = contains(before, connector) ? added : connector;
        }
        return !added.empty() || !monitor->isRunning();
    });
    if (!isPlugged || added.empty()) {
        throw std::runtime_error("the compositor has no monitor more:\n" + messages());
    }
    monitors_.emplace(added, std::move(monitor));
    return added;
}

void PluggedMonitors::unplug(const std::string& connector) {
    const pid_t leader = monitors_.at(connector)->pid();
    monitors_.erase(connector);
    janitor_.forgetGroup(leader);
    if (!waitUntil([&] { return !contains(connectorsOf(desktop_), connector); })) {
        throw std::runtime_error("the compositor keeps a monitor that is gone");
    }
}

}  // namespace tavrel::support
