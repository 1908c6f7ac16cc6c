#pragma once

#include <string>

class QWidget;

namespace tavrel {

/// Shows a window that is filled only later. Until it is painted it has its palette's colour, and
/// not what the screen showed in its place, also when that takes seconds: the fonts of a system
/// may have to be searched for first. Main thread only.
void showEmpty(QWidget& window);

/// Shows a window that was hidden or minimised and gives it the focus, above all others.
/// Main thread only.
///
/// `activationToken`, where it is not empty, is what a Wayland compositor wants to see before it
/// does that, because the user has not touched this application but another. The toolkit's tray
/// learns of tokens by itself; then it is empty.
void bringToFront(QWidget& window, const std::string& activationToken);

}  // namespace tavrel
