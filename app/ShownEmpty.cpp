#include "app/ShownEmpty.h"

#include <QGuiApplication>
#include <QPalette>
#include <QWidget>

#if QT_CONFIG(xcb)
#include "platform/x11/WindowColor.h"
#endif

namespace tavrel {

namespace {

/// An X server paints a window that it exposes, but the toolkit tells it not to. Elsewhere a
/// window without a picture is not shown at all.
void letServerPaint([[maybe_unused]] const QWidget& window) {
#if QT_CONFIG(xcb)
    const auto* server = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // The toolkit's platform without a screen has one, and no connection.
    if (server != nullptr && server->connection() != nullptr) {
        x11::setExposedColor(server->connection(), static_cast<xcb_window_t>(window.winId()),
                             window.palette().color(QPalette::Window).rgb());
    }
#endif
}

}  // namespace

void showEmpty(QWidget& window) {
    letServerPaint(window);
    window.show();
}

}  // namespace tavrel
