#pragma once

#include <string>

class QWidget;

namespace tavrel {

/// Shows a window that was hidden or minimised and gives it the focus, above all others.
/// Main thread only.
///
/// `activationToken`, where it is not empty, is what a Wayland compositor wants to see before it
/// does that, because the user has not touched this application but another. The toolkit's tray
/// learns of tokens by itself; then it is empty.
void bringToFront(QWidget& window, const std::string& activationToken);

}  // namespace tavrel
