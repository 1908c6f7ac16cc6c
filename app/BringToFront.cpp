#include "app/BringToFront.h"

#include <chrono>

#include <QWidget>

#include "app/X11Connection.h"

#if QT_CONFIG(xcb)
#include "platform/x11/OwnWindow.h"
#endif

namespace tavrel {

namespace {

/// The toolkit asks an X11 window manager for the focus as of the last event that this application
/// has seen, which may be long ago.
void claimFocusNow([[maybe_unused]] const QWidget& window) {
#if QT_CONFIG(xcb)
    xcb_connection_t* server = x11Connection();
    if (server == nullptr) {
        return;
    }
    // The window has to be there before it is asked for.
    xcb_flush(server);
    constexpr std::chrono::seconds timeout{1};
    x11::requestFocus(static_cast<xcb_window_t>(window.winId()), {.timeout = timeout});
#endif
}

}  // namespace

void bringToFront(QWidget& window, const std::string& activationToken) {
    // Where the toolkit looks for it when a window is activated.
    constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";
    if (!activationToken.empty()) {
        qputenv(tokenVariable, QByteArray::fromStdString(activationToken));
    }
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
    claimFocusNow(window);
}

}  // namespace tavrel
