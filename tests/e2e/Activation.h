#pragma once

#include <algorithm>
#include <string>

#include "tests/support/AccessibleWindow.h"
#include "tests/support/AppProcess.h"
#include "tests/support/ChildProcess.h"

namespace tavrel::e2e {

/// The application on a desktop of Wayland's, whose windows get the focus only from whoever the
/// user deals with. `Stage` is the desktop.
template <typename Stage>
class Activation {
public:
    explicit Activation(Stage& stage) : stage_(stage) {}

    bool hasFocus() const {
        const auto elements = stage_.accessible().elements();
        return std::any_of(elements.begin(), elements.end(),
                           [](const auto& each) { return each.isActive(); });
    }

    /// Starts the application once more, as a program does that has `token` to hand on. Returns
    /// whether it ends well.
    bool startAgain(const std::string& token) const {
        support::Environment environment = stage_.environment();
        environment["XDG_ACTIVATION_TOKEN"] = token;
        const support::AppProcess second(stage_.home(),
                                         {.program = TAVREL_PROGRAM, .environment = environment});
        return second.process().waitForEnd() ==
                   support::ChildProcess::Ending{.exitStatus = 0, .signal = std::nullopt} &&
               second.standardError().empty();
    }

    /// Launches it as a desktop does whose tools know only the older name for a token.
    void launch(const std::string& token) const {
        support::Environment environment = support::bareEnvironment();
        environment["DBUS_SESSION_BUS_ADDRESS"] =
            stage_.environment().at("DBUS_SESSION_BUS_ADDRESS");
        environment["DESKTOP_STARTUP_ID"] = token;
        support::runToEnd({"gapplication", "launch", TAVREL_APPLICATION_ID}, environment);
    }

private:
    Stage& stage_;
};

}  // namespace tavrel::e2e
