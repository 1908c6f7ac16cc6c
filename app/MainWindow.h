#pragma once

#include <memory>

#include <QWidget>

#include "controller/DisplayController.h"

class QMenuBar;

namespace tavrel {

/// The application's one window: the control view at its fixed size and, where menus live
/// in windows, the menu bar in the free strip above the view's header.
class MainWindow : public QWidget {
public:
    explicit MainWindow(std::shared_ptr<DisplayController> controller);
    ~MainWindow() override;

private:
    void addMenus(QMenuBar& menuBar);

    std::shared_ptr<DisplayController> controller_;
    /// The menu bar that all windows share, where they do; else null.
    std::unique_ptr<QMenuBar> sharedMenuBar_;
};

}  // namespace tavrel
