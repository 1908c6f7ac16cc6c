#pragma once

#include <memory>

#include <QMenu>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QWidget>

#include "controller/DisplayController.h"
#include "platform/TrayHost.h"

namespace tavrel {

/// The application in the desktop's tray. As long as there is one, closing the window leaves
/// the application there, and its icon, which suits panels of any colour, tells whether a display
/// is off; without one, closing the window ends the application. When the tray goes while the
/// window is closed, the window is shown again, so that the user is never without a way to the
/// application. Main thread only.
class Tray : public QObject {
public:
    /// `window` must outlive this.
    Tray(QWidget& window, std::shared_ptr<DisplayController> controller,
         std::unique_ptr<TrayHost> host);

private:
    void follow();
    void showState();

    QWidget& window_;
    const std::shared_ptr<DisplayController> controller_;
    QMenu menu_;
    /// Only where there is a tray: the toolkit asks the desktop for it in the constructor, and
    /// would wait for a bus that hangs.
    std::unique_ptr<QSystemTrayIcon> icon_;
    /// Shows the state once in a turn of the main loop, however much has changed.
    QTimer stateTimer_;
    ObjectWillChange::Subscription subscription_;
    /// Goes first, since it tells us of changes.
    const std::unique_ptr<TrayHost> host_;
};

}  // namespace tavrel
