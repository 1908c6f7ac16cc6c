#pragma once

#include <QString>

/// Every text of the menus.
namespace tavrel::menuTexts {

inline const QString file = QStringLiteral("File");
inline const QString quit = QStringLiteral("Quit");
inline const QString displays = QStringLiteral("Displays");
inline const QString wakeBothDisplays = QStringLiteral("Wake Both Displays");
inline const QString refreshDisplays = QStringLiteral("Refresh Displays");

}  // namespace tavrel::menuTexts
