#include "platform/session/LinuxWindowServer.h"

#include "platform/gnome/GnomeReconfigurationReports.h"
#include "platform/gnome/GnomeWindowServer.h"
#include "platform/plasma/PlasmaReconfigurationReports.h"
#include "platform/plasma/PlasmaWindowServer.h"
#include "platform/session/NoWindowServer.h"
#include "platform/x11/X11ReconfigurationReports.h"
#include "platform/x11/X11WindowServer.h"

namespace tavrel::session {

namespace {

template <typename Server>
LinuxWindowServer both(std::shared_ptr<Server> server) {
    return {.displaySwitch = server, .queries = server};
}

}  // namespace

LinuxWindowServer makeWindowServer(WindowServerKind kind, UserDefaults& store) {
    switch (kind) {
        case WindowServerKind::x11:
            return both(std::make_shared<X11WindowServer>(store));
        case WindowServerKind::gnome:
            return both(std::make_shared<GnomeWindowServer>(store));
        case WindowServerKind::plasma:
            return both(std::make_shared<PlasmaWindowServer>(store));
        case WindowServerKind::none:
            break;
    }
    return both(std::make_shared<NoWindowServer>());
}

std::unique_ptr<ReconfigurationReports> makeReports(WindowServerKind kind, UserDefaults& store) {
    switch (kind) {
        case WindowServerKind::x11:
            return std::make_unique<X11ReconfigurationReports>(store);
        case WindowServerKind::gnome:
            return std::make_unique<GnomeReconfigurationReports>(store);
        case WindowServerKind::plasma:
            return std::make_unique<PlasmaReconfigurationReports>(store);
        case WindowServerKind::none:
            break;
    }
    return std::make_unique<NoReports>();
}

}  // namespace tavrel::session
