#pragma once

#include <memory>

#include <QWidget>

#include "controller/DisplayController.h"
#include "platform/HotKeys.h"

class QMenuBar;

namespace tavrel {

/// The application's one window: the control view at its fixed size and, where menus live
/// in windows, the menu bar in the free strip above the view's header.
class MainWindow : public QWidget {
public:
    /// `hotKeys` must outlive the window.
    MainWindow(std::shared_ptr<DisplayController> controller, HotKeys& hotKeys);
    ~MainWindow() override;

private:
    void addMenus(QMenuBar& menuBar);

    std::shared_ptr<DisplayController> controller_;
    /// The menu bar that all windows share, where they do; else null.
    std::unique_ptr<QMenuBar> sharedMenuBar_;
    /// Shows whether the hot key works; null where that is not shown.
    std::unique_ptr<HotKeys::Handle> heldObserver_;
};

}  // namespace tavrel
