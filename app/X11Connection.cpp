#include "app/X11Connection.h"

#include <QGuiApplication>

namespace tavrel {

xcb_connection_t* x11Connection() {
#if QT_CONFIG(xcb)
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // The toolkit's platform without a screen has one, and no connection either.
    return x11 == nullptr ? nullptr : x11->connection();
#else
    return nullptr;
#endif
}

}  // namespace tavrel
