#include "app/BringToFront.h"

#include <chrono>

#include <QGuiApplication>
#include <QWidget>

#if QT_CONFIG(xcb)
#include "platform/x11/FocusRequest.h"
#endif

namespace tavrel {

namespace {

/// The toolkit asks an X11 window manager for the focus as of the last event that this application
/// has seen, which may be long ago.
void claimFocusNow([[maybe_unused]] const QWidget& window) {
#if QT_CONFIG(xcb)
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // The toolkit's platform without a screen has one, and no connection.
    if (x11 == nullptr || x11->connection() == nullptr) {
        return;
    }
    // The window has to be there before it is asked for.
    xcb_flush(x11->connection());
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
