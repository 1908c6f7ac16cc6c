#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel {

/// Runs another program at the virtual desktop to its end. Throws when it fails.
inline void runXProgram(const support::VirtualDesktop& desktop, std::vector<std::string> command) {
    support::Environment environment = support::bareEnvironment();
    environment["DISPLAY"] = desktop.displayName();
    support::runToEnd(std::move(command), std::move(environment));
}

}  // namespace tavrel
