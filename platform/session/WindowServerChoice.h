#pragma once

#include <functional>
#include <optional>
#include <string_view>

namespace tavrel::session {

/// The window servers that are spoken to on Linux.
enum class WindowServerKind {
    /// None that lets itself be told which displays to use.
    none,
    x11,
    gnome,
    plasma,
};

/// What answers where the X server is expected.
enum class XServerKind {
    /// Nobody, or nobody yet.
    absent,
    real,
    /// One that draws into a Wayland compositor's windows. Its outputs look like monitors and
    /// cannot be switched.
    xwayland,
};

/// What a session shows of itself. Each question may take seconds; it is put only if it matters.
struct SessionSigns {
    /// Whether it calls itself one of Wayland's.
    std::function<bool()> isWayland;
    /// Whether the compositor offers Plasma's protocol for outputs.
    std::function<bool()> speaksPlasma;
    /// Whether GNOME's compositor is on the session's bus, and answers like it.
    std::function<bool()> answersLikeGnome;
    std::function<XServerKind()> xServer;
};

/// The window server of such a session. Without any sign it is an X server, which may come yet.
WindowServerKind chooseWindowServer(const SessionSigns& signs);

/// The same for this session. Blocks for some seconds at most.
WindowServerKind chooseWindowServer();

/// What the application tells the watchdog, so that both use one: a word.
std::string_view nameOf(WindowServerKind kind);
/// std::nullopt when it is none of these names.
std::optional<WindowServerKind> kindNamed(std::string_view name);

}  // namespace tavrel::session
