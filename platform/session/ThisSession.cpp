#include <cstdlib>
#include <optional>
#include <string_view>

#include "platform/gnome/GnomeProbe.h"
#include "platform/plasma/PlasmaWindowServer.h"
#include "platform/session/WindowServerChoice.h"
#include "platform/x11/XServerProbe.h"

namespace tavrel::session {

namespace {

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

bool isWayland() {
    return !variable("WAYLAND_DISPLAY").empty() || variable("XDG_SESSION_TYPE") == "wayland";
}

XServerKind xServer() {
    const std::optional<bool> isXwayland = x11::isXwayland();
    if (!isXwayland.has_value()) {
        return XServerKind::absent;
    }
    return *isXwayland ? XServerKind::xwayland : XServerKind::real;
}

}  // namespace

WindowServerKind chooseWindowServer() {
    return chooseWindowServer({.isWayland = isWayland,
                               .speaksPlasma = [] { return isPlasmaOffered(); },
                               .answersLikeGnome = [] { return gnome::answersLikeGnome(); },
                               .xServer = xServer});
}

}  // namespace tavrel::session
