#include "app/ShownEmpty.h"

#include <QPalette>
#include <QWidget>

#include "app/X11Connection.h"

#if QT_CONFIG(xcb)
#include "platform/x11/OwnWindow.h"
#endif

namespace tavrel {

namespace {

/// An X server paints a window that it exposes, but the toolkit tells it not to. Elsewhere a
/// window without a picture is not shown at all.
void letServerPaint([[maybe_unused]] const QWidget& window) {
#if QT_CONFIG(xcb)
    if (xcb_connection_t* server = x11Connection()) {
        x11::setExposedColor(server, static_cast<xcb_window_t>(window.winId()),
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
