#pragma once

#include <csignal>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/Session.h"
#include "tests/watchdog/Processes.h"

namespace tavrel::e2e {

/// The application with three monitors, and a view of its processes, to be killed at will.
class WatchdogSession {
public:
    WatchdogSession() { start(); }

    void start(const support::Environment& environment = {}) {
        session.emplace(desktop, home, environment);
        // The watchdog starts a moment after the window.
        isUp = session->says("Found 3 displays") && watchdog() != 0;
    }

    pid_t application() { return session->application().pid(); }

    std::vector<pid_t> watchdogs() const {
        return tavrel::watchdog::processesOf(TAVREL_WATCHDOG, "DISPLAY=" + desktop.displayName());
    }

    /// The one watchdog that runs, awaited; 0 if there never is exactly one.
    pid_t watchdog() const {
        std::vector<pid_t> found;
        support::waitUntil([&] { return (found = watchdogs()).size() == 1; });
        return found.size() == 1 ? found.front() : 0;
    }

    /// How many processes of the application and its watchdogs run.
    std::size_t processes() const {
        return watchdogs().size() +
               tavrel::watchdog::processesOf(program, "DISPLAY=" + desktop.displayName()).size();
    }

    /// Presses the switch of the row with this number, counting from 1.
    void press(int row) { session->act(nameOf(row) + " power"); }

    /// Presses the switch and returns whether the display then becomes "on" or "off".
    bool pressAndAwait(int row, const std::string& outcome) {
        press(row);
        return session->says(nameOf(row) + " is " + outcome);
    }

    static std::string nameOf(int row) { return "External Display " + std::to_string(row); }

    /// Kills the application and its watchdog as if in one moment.
    void killBoth() {
        const std::vector<pid_t> both{watchdog(), application()};
        for (const int signal : {SIGSTOP, SIGKILL}) {
            for (const pid_t each : both) {
                ::kill(each, signal);
            }
        }
        session->application().process().waitForEnd();
    }

    bool allComeBackAsTheyWere() const {
        return support::waitUntil([&] { return desktop.monitors() == atFirst; });
    }

    bool nothingIsLeftRunning() const {
        return support::waitUntil([&] { return processes() == 0; });
    }

    /// Whether the store comes to name that many displays as off. A slow disk is waited for only
    /// so long before a display goes off, and is given the rest later.
    bool storeComesToName(std::size_t count) const {
        return support::waitUntil([&] { return displaysNamedByTheStore() == count; });
    }

    support::VirtualDesktop desktop{{.accessibility = true}};
    const std::vector<support::Monitor> atFirst = desktop.monitors();
    support::UserHome home;
    std::optional<Session> session;
    bool isUp = false;

private:
    std::size_t displaysNamedByTheStore() const {
        const auto store =
            nlohmann::json::parse(support::readFile(home.defaultsFile()), nullptr, false);
        const std::string text =
            store.is_object() ? store.value("TavrelRememberedOutputs", "[]") : "[]";
        return nlohmann::json::parse(text, nullptr, false).size();
    }
};

}  // namespace tavrel::e2e
