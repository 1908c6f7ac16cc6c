#include "app/BringToFront.h"

#include <QWidget>
#include <QtGlobal>

namespace tavrel {

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
}

}  // namespace tavrel
