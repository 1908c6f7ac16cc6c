#pragma once

#include <QString>
#include <QStringView>

/// All texts for the user but those of the view, those that come from the controller, and the
/// words that differ by system.
namespace tavrel::appTexts {

inline constexpr QStringView product = u"Tavrel";

// The menus of the window.
inline constexpr QStringView fileMenu = u"File";
inline constexpr QStringView close = u"Close";
inline constexpr QStringView displaysMenu = u"Displays";
inline constexpr QStringView refreshDisplays = u"Refresh Displays";
inline constexpr QStringView windowMenu = u"Window";
inline constexpr QStringView minimize = u"Minimize";
inline constexpr QStringView zoom = u"Zoom";

// The menu of the tray, and what its icon says.
inline constexpr QStringView show = u"Show";
inline constexpr QStringView refresh = u"Refresh";
inline constexpr QStringView allOn = u"All displays are on";
inline constexpr QStringView someOff = u"Some displays are off";

// Both menus.
inline constexpr QStringView quit = u"Quit";
/// Also what a desktop calls the hot key.
inline constexpr QStringView wakeBothDisplays = u"Wake Both Displays";

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
