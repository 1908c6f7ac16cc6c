#include "platform/session/WindowServerChoice.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "platform/gnome/GnomeWindowServer.h"
#include "platform/plasma/PlasmaWindowServer.h"
#include "platform/x11/X11WindowServer.h"

namespace tavrel::session {

namespace {

constexpr std::array<std::pair<WindowServerKind, std::string_view>, 4> names{
    {{WindowServerKind::none, "none"},
     {WindowServerKind::x11, "x11"},
     {WindowServerKind::gnome, "gnome"},
     {WindowServerKind::plasma, "plasma"}}};

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

bool callsItselfWayland() {
    return !variable("WAYLAND_DISPLAY").empty() || variable("XDG_SESSION_TYPE") == "wayland";
}

XServerKind xServerHere() {
    const std::optional<bool> drawsIntoWayland = isXwayland();
    if (!drawsIntoWayland.has_value()) {
        return XServerKind::absent;
    }
    return *drawsIntoWayland ? XServerKind::xwayland : XServerKind::real;
}

}  // namespace

WindowServerKind chooseWindowServer(const SessionSigns& signs) {
    const bool isWayland = signs.isWayland();
    const auto xServer = isWayland ? std::nullopt : std::optional(signs.xServer());
    if (isWayland || xServer == XServerKind::xwayland) {
        if (signs.speaksPlasma()) {
            return WindowServerKind::plasma;
        }
        if (signs.answersLikeGnome()) {
            return WindowServerKind::gnome;
        }
        const bool hasRealX = !xServer.has_value() && signs.xServer() == XServerKind::real;
        return hasRealX ? WindowServerKind::x11 : WindowServerKind::none;
    }
    return WindowServerKind::x11;
}

WindowServerKind chooseWindowServer() {
    return chooseWindowServer({.isWayland = callsItselfWayland,
                               .speaksPlasma = [] { return isPlasmaOffered(); },
                               .answersLikeGnome = [] { return gnome::answersLikeGnome(); },
                               .xServer = xServerHere});
}

std::string_view nameOf(WindowServerKind kind) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [kind](const auto& each) { return each.first == kind; });
    return found->second;
}

std::optional<WindowServerKind> kindNamed(std::string_view name) {
    const auto found = std::find_if(names.begin(), names.end(),
                                    [name](const auto& each) { return each.second == name; });
    return found == names.end() ? std::nullopt : std::optional(found->first);
}

}  // namespace tavrel::session
