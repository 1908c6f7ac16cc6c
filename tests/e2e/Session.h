#pragma once

#include <algorithm>
#include <optional>
#include <string>

#include "tests/scenario/AccessibleReading.h"
#include "tests/support/AccessibleWindow.h"
#include "tests/support/AppProcess.h"
#include "tests/support/AppWindow.h"
#include "tests/support/OtherSession.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel::e2e {

/// The application under test.
inline constexpr const char* program = TAVREL_PROGRAM;

/// One run of the application on a desktop, used and read like a person with assistive
/// technology does.
class Session {
public:
    Session(const support::VirtualDesktop& desktop, const support::UserHome& home,
            const support::Environment& environment = {}, const std::string& executable = program)
        : desktop_(desktop),
          application_(desktop, home, {.program = executable, .environment = environment}),
          accessible_(desktop.accessibilityBusAddress(), application_.pid()) {}

    /// The same in another session of the desktop's user.
    Session(const support::VirtualDesktop& desktop, const support::UserHome& home,
            const support::OtherSession& session)
        : desktop_(desktop),
          application_(desktop, home, {.program = program, .environment = session.environment()}),
          accessible_(session.accessibilityBusAddress(), application_.pid()) {}

    support::AppProcess& application() { return application_; }
    const support::AccessibleWindow& accessible() const { return accessible_; }

    scenario::Window window() const { return scenario::readWindow(accessible_.elements()); }

    /// The element of that name, awaited; an empty one if it never appears.
    support::AccessibleElement element(const std::string& name) const {
        std::optional<support::AccessibleElement> found;
        support::waitUntil([&] { return (found = accessible_.find(name)).has_value(); });
        return found.value_or(support::AccessibleElement{});
    }

    /// Presses the element of that name, awaited. Returns whether the program took it.
    bool act(const std::string& name) const {
        return accessible_.actOn([&] { return accessible_.find(name); });
    }

    bool says(const std::string& footer) const {
        return support::waitUntil([&] { return window().footer == footer; });
    }

    /// Whether it exits by itself with this status.
    bool exitsWith(int status) const {
        return application_.process().waitForEnd() ==
               support::ChildProcess::Ending{.exitStatus = status, .signal = std::nullopt};
    }

    /// Its window at the server, awaited. Throws std::bad_optional_access without one.
    support::AppWindow topLevel() const {
        std::optional<support::AppWindow> found;
        support::waitUntil([&] {
            found = support::AppWindow::find(desktop_.displayName(), application_.pid());
            return found.has_value();
        });
        return found.value();
    }

private:
    const support::VirtualDesktop& desktop_;
    support::AppProcess application_;
    support::AccessibleWindow accessible_;
};

}  // namespace tavrel::e2e
