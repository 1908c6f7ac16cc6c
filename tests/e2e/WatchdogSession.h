#pragma once

#include <csignal>
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

    void start() {
        session.emplace(desktop, home);
        isUp = session->says("Found 3 displays");
    }

    pid_t application() { return session->application().pid(); }

    std::vector<pid_t> guards() const {
        return watchdog::processesOf(TAVREL_WATCHDOG, "DISPLAY=" + desktop.displayName());
    }

    /// The one guard there is; 0 if it never comes to be one.
    pid_t guard() const {
        std::vector<pid_t> found;
        support::waitUntil([&] { return (found = guards()).size() == 1; });
        return found.size() == 1 ? found.front() : 0;
    }

    /// The application's and its guards', however old.
    std::size_t processes() const {
        return guards().size() +
               watchdog::processesOf(program, "DISPLAY=" + desktop.displayName()).size();
    }

    /// Presses the switch of the row with this number, counting from 1.
    void flip(int row) { session->act(nameOf(row) + " power"); }

    /// Switches a display off or on and awaits that it is done.
    bool flipAndAwait(int row, const std::string& outcome) {
        flip(row);
        return session->says(nameOf(row) + " is " + outcome);
    }

    static std::string nameOf(int row) { return "External Display " + std::to_string(row); }

    /// Kills the application and its guard as if in one moment.
    void killBoth() {
        const std::vector<pid_t> both{guard(), application()};
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

    support::VirtualDesktop desktop{{.accessibility = true}};
    const std::vector<support::Monitor> atFirst = desktop.monitors();
    support::UserHome home;
    std::optional<Session> session;
    bool isUp = false;
};

}  // namespace tavrel::e2e
