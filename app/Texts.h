#pragma once

/// All texts for the user but those of the view, those that come from the controller, and the
/// words that differ by system. UTF-8, so that parts without the toolkit can use them.
namespace tavrel::appTexts {

inline constexpr const char* product = "Tavrel";

// The menus of the window.
inline constexpr const char* fileMenu = "File";
inline constexpr const char* close = "Close";
inline constexpr const char* displaysMenu = "Displays";
inline constexpr const char* refreshDisplays = "Refresh Displays";
inline constexpr const char* windowMenu = "Window";
inline constexpr const char* minimize = "Minimize";
inline constexpr const char* zoom = "Zoom";

// The menu of the tray, and what its icon says.
inline constexpr const char* show = "Show";
inline constexpr const char* refresh = "Refresh";
inline constexpr const char* allOn = "All displays are on";
inline constexpr const char* someOff = "Some displays are off";

// Both menus.
inline constexpr const char* quit = "Quit";
/// Also what a desktop calls the hot key.
inline constexpr const char* wakeBothDisplays = "Wake Both Displays";

/// The error line, when what the application remembers cannot be written.
inline constexpr const char* unwritableStore =
    "Your displays can’t be saved right now. Tavrel remembers them until it quits and keeps "
    "trying.";

/// What a start without a display server prints, before the server's name.
inline constexpr const char* noDisplayServerAt =
    "cannot open a window: no display server answers at";

/// Why the application is active in the background, for those who look for what is running.
inline constexpr const char* activityReason = "Looks after the displays that are switched off";

}  // namespace tavrel::appTexts
