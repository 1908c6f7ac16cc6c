#pragma once

#include <QString>
#include <QStringView>

/// All texts of the control view that do not come from the controller.
namespace tavrel::texts {

inline constexpr QStringView productTitle = u"TAVREL";
inline constexpr QStringView heading = u"Your screens";
inline constexpr QStringView refreshDisplays = u"Refresh displays";
inline constexpr QStringView wakeBothDisplays = u"Wake both displays";

inline constexpr QStringView wakeShortcutNotGiven =
    u"This desktop gives Tavrel no hot key. Bind a key to: gapplication "
    u"action " TAVREL_APPLICATION_ID u" wake";

inline constexpr QStringView mustStayOn = u"Must stay on";
inline constexpr QStringView atLeastOneMustStayOn = u"At least one display must stay on";

inline constexpr QStringView builtInExplanation = u"Built-in panel · removed from desktop when off";
inline constexpr QStringView externalExplanation =
    u"External monitor · removed from desktop when off";

inline constexpr QStringView switchOn = u"On";
inline constexpr QStringView switchOff = u"Off";

/// The tooltip and the accessible description of a row: which of the user's monitors it is.
/// Either may be empty, and left out.
inline QString hardware(const QString& monitor, const QString& connector) {
    const bool areBoth = !monitor.isEmpty() && !connector.isEmpty();
    return monitor + (areBoth ? QStringLiteral(" · ") : QString()) + connector;
}

/// The accessible name of a display's switch.
inline QString powerName(const QString& displayName) {
    return displayName + QStringLiteral(" power");
}

/// The tooltip of the hint, when the hot key doesn't work.
inline QString wakeShortcutNotHeld(const QString& shortcut) {
    return shortcut + QStringLiteral(
                          " doesn’t work at the moment: another program is using it, or this "
                          "keyboard lacks one of its keys");
}

/// The tooltip of a switch that may be used.
inline QString enableOrDisable(const QString& displayName) {
    return QStringLiteral("Enable or disable ") + displayName;
}

}  // namespace tavrel::texts
