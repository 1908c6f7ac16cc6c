#pragma once

#include <memory>

#include <QWidget>

#include "controller/DisplayController.h"
#include "platform/HotKeys.h"
#include "ui/paint/Backdrop.h"

class QMenuBar;

namespace tavrel {

class DisplayControlView;

/// The application's one window: the control view at its fixed size and, where menus live
/// in windows, the menu bar in the free strip above the view's header.
class MainWindow : public QWidget {
public:
    /// Empty as yet: it can be shown at once, and be filled while the window server gets to know
    /// it. Nothing is painted before the main loop runs.
    MainWindow();
    ~MainWindow() override;

    /// Call once. `hotKeys` must outlive the window. What it is filled with is not shown yet.
    void fill(std::shared_ptr<DisplayController> controller, HotKeys& hotKeys);

    /// Shows what it was filled with, as the controller is by then, in front of `backdrop`. Call
    /// once.
    void reveal(Backdrop backdrop);

private:
    void addMenuBar(const DisplayControlView& view);
    void addMenus(QMenuBar& menuBar);
    void showWakeShortcut(DisplayControlView& view, HotKeys& hotKeys);

    std::shared_ptr<DisplayController> controller_;
    DisplayControlView* view_ = nullptr;
    /// The menu bar that all windows share, where they do; else null.
    std::unique_ptr<QMenuBar> sharedMenuBar_;
    /// Shows whether the hot key works; null where that is not shown.
    std::unique_ptr<HotKeys::Handle> heldObserver_;
};

/// The menus that every application on a Mac has, but for what this one cannot do: there is no
/// second window to open, and its only one has one size. The application's own menu, with Quit,
/// the system adds itself. Main thread only.
///
/// Both act on `window`, which must outlive the menu bar, while that is shown.
void addMacFileMenu(QMenuBar& menuBar, QWidget& window);
void addMacWindowMenu(QMenuBar& menuBar, QWidget& window);

}  // namespace tavrel
