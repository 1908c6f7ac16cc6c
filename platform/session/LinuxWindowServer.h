#pragma once

#include <memory>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/ReconfigurationReports.h"
#include "platform/UserDefaults.h"
#include "platform/session/WindowServerChoice.h"

namespace tavrel::session {

/// A window server as who uses it sees it. Owns all it needs.
struct LinuxWindowServer {
    std::shared_ptr<DisplaySwitch> displaySwitch;
    std::shared_ptr<DisplayQueries> queries;
};

/// `store` must outlive what is returned. Blocks no longer than the window server's timeout.
LinuxWindowServer makeWindowServer(WindowServerKind kind, UserDefaults& store);

/// Its reports. `store` must outlive them.
std::unique_ptr<ReconfigurationReports> makeReports(WindowServerKind kind, UserDefaults& store);

}  // namespace tavrel::session
