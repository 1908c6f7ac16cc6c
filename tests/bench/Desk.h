#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/bench/WindowWatch.h"
#include "tests/support/AppProcess.h"
#include "tests/support/MessageBus.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel::bench {

/// A program that shows the monitors.
struct Program {
    std::string name;
    std::string command;

    bool hasHelper = false;

    static Program tavrel() { return {"Tavrel", TAVREL_PROGRAM, true}; }
    /// Where it is not installed, `isInstalled` is false.
    static Program other(const std::string& name) { return {name, name}; }

    bool isInstalled() const;
};

/// The application's process, and that of its helper, the watchdog: the one that has this entry, as
/// in "DISPLAY=:7", in its environment. Throws std::runtime_error unless there is exactly one.
std::vector<pid_t> withHelper(pid_t application, const std::string& entry);

/// An X server with three monitors, and an ordinary session on it: a message bus, no assistive
/// technology, no window manager.
class Desk {
public:
    Desk();

    const support::VirtualDesktop& desktop() const { return desktop_; }
    const std::string& displayName() const { return desktop_.displayName(); }

    /// Starts a program in `home`.
    std::unique_ptr<support::AppProcess> start(const Program& program,
                                               const support::UserHome& home,
                                               const support::Environment& environment = {}) const;

private:
    support::VirtualDesktop desktop_;
    support::TemporaryFolder folder_;
    support::Janitor janitor_{folder_.path()};
    support::MessageBus bus_{folder_.path(), "bus", janitor_};
};

/// The application, open on a desk and at rest.
class RunningApplication {
public:
    explicit RunningApplication(const Desk& desk, const support::Environment& environment = {})
        : watch(desk.displayName()) {
        process = desk.start(Program::tavrel(), home, environment);
        opening = watch.awaitOpening();
    }

    WindowWatch watch;
    support::UserHome home;
    std::unique_ptr<support::AppProcess> process;
    WindowWatch::Opening opening;
};

}  // namespace tavrel::bench
