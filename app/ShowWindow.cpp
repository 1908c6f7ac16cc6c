#include "app/ShowWindow.h"

#include <chrono>

#include <QGuiApplication>
#include <QPalette>
#include <QWidget>

#if QT_CONFIG(xcb)
#include "platform/x11/OwnWindow.h"
#endif

namespace tavrel {

namespace {

#if QT_CONFIG(xcb)
/// The toolkit's connection to an X server, which stays its own; null where it has none.
xcb_connection_t* x11Connection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // The toolkit's platform without a screen has one, and no connection either.
    return x11 == nullptr ? nullptr : x11->connection();
}

/// An X server paints a window that it exposes, but the toolkit tells it not to. Elsewhere a
/// window without a picture is not shown at all.
void letServerPaint(const QWidget& window) {
    if (xcb_connection_t* server = x11Connection()) {
        x11::setExposedColor(server, static_cast<xcb_window_t>(window.winId()),
                             window.palette().color(QPalette::Window).rgb());
    }
}

/// The toolkit asks an X11 window manager for the focus as of the last event that this application
/// has seen, which may be long ago.
void claimFocusNow(const QWidget& window) {
    xcb_connection_t* server = x11Connection();
    if (server == nullptr) {
        return;
    }
    // The window has to be there before it is asked for.
    xcb_flush(server);
    constexpr std::chrono::seconds timeout{1};
    x11::requestFocus(static_cast<xcb_window_t>(window.winId()), {.timeout = timeout});
}
#else
void letServerPaint(const QWidget& /*window*/) {}
void claimFocusNow(const QWidget& /*window*/) {}
#endif

}  // namespace

void showEmpty(QWidget& window) {
    letServerPaint(window);
    window.show();
}

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
