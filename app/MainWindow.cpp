#include "app/MainWindow.h"

#include <optional>
#include <utility>

#include <QAction>
#include <QApplication>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

#include "app/Texts.h"
#include "ui/DisplayControlView.h"
#include "ui/paint/Theme.h"

namespace tavrel {

MainWindow::MainWindow() {
    setWindowTitle(QCoreApplication::applicationName());
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                   Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                   Qt::WindowCloseButtonHint);
    setFixedSize(DisplayControlView::contentSize);
}

MainWindow::~MainWindow() = default;

void MainWindow::fill(std::shared_ptr<DisplayController> controller, HotKeys& hotKeys) {
    controller_ = std::move(controller);
    view_ = new DisplayControlView(controller_, this);
    view_->hide();
    view_->setGeometry(rect());
    addMenuBar(*view_);
    showWakeShortcut(*view_, hotKeys);
}

void MainWindow::reveal(Backdrop backdrop) {
    view_->setBackdrop(std::move(backdrop));
    view_->show();
}

#ifdef Q_OS_MACOS
void MainWindow::addMenuBar(const DisplayControlView& /*view*/) {
    sharedMenuBar_ = std::make_unique<QMenuBar>(nullptr);
    addMenus(*sharedMenuBar_);
}

void MainWindow::showWakeShortcut(DisplayControlView& /*view*/, HotKeys& /*hotKeys*/) {
    // Here no program learns whether another holds the chord exclusively, so there is nothing to
    // show.
}
#else
void MainWindow::addMenuBar(const DisplayControlView& view) {
    auto* menuBar = new QMenuBar(this);
    menuBar->setNativeMenuBar(false);
    menuBar->setStyleSheet(theme::menuBarStyleSheet());
    const QFont menuFont = theme::font({.size = 12, .weight = QFont::Medium}, 1);
    menuBar->setFont(menuFont);
    addMenus(*menuBar);
    const auto placeMenus = [menuBar, &view] {
        const QRect strip = view.menuStrip();
        menuBar->move(strip.topLeft());
        // Fixed, or the menu bar would take its own size when its parent's changes.
        menuBar->setFixedSize(strip.size());
    };
    connect(&view, &DisplayControlView::rebuilt, menuBar, placeMenus);
    for (QMenu* menu : menuBar->findChildren<QMenu*>()) {
        menu->setFont(menuFont);
    }
    menuBar->show();
}

void MainWindow::showWakeShortcut(DisplayControlView& view, HotKeys& hotKeys) {
    const auto showWhetherHeld = [&view, &hotKeys] {
        view.setWakeShortcut({.works = hotKeys.isHeld(),
                              .keys = QString::fromStdString(hotKeys.boundTo()).simplified(),
                              .desktopDecides = hotKeys.desktopDecides()});
    };
    heldObserver_ = hotKeys.observeHeld(showWhetherHeld);
    showWhetherHeld();
}
#endif

void MainWindow::addMenus(QMenuBar& menuBar) {
#ifdef Q_OS_MACOS
    addMacFileMenu(menuBar, *this);
#else
    QMenu* file = menuBar.addMenu(appTexts::fileMenu);
    QAction* quit = file->addAction(appTexts::quit);
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    connect(quit, &QAction::triggered, qApp, &QCoreApplication::quit);
#endif
    QMenu* displays = menuBar.addMenu(appTexts::displaysMenu);

    QAction* wake = displays->addAction(appTexts::wakeBothDisplays);
    wake->setShortcut(Qt::CTRL | Qt::ALT | Qt::META | Qt::Key_W);
    wake->setAutoRepeat(false);
    connect(wake, &QAction::triggered, this, [this] { controller_->wakeAll(); });

    QAction* refresh = displays->addAction(appTexts::refreshDisplays);
    refresh->setShortcut(Qt::CTRL | Qt::Key_R);
    connect(refresh, &QAction::triggered, this, [this] { controller_->refresh(std::nullopt); });
#ifdef Q_OS_MACOS
    addMacWindowMenu(menuBar, *this);
#endif
}

void addMacFileMenu(QMenuBar& menuBar, QWidget& window) {
    QMenu* menu = menuBar.addMenu(appTexts::fileMenu);
    QAction* close = menu->addAction(appTexts::close);
    close->setShortcut(Qt::CTRL | Qt::Key_W);
    QObject::connect(close, &QAction::triggered, &window, &QWidget::close);
}

void addMacWindowMenu(QMenuBar& menuBar, QWidget& window) {
    QMenu* menu = menuBar.addMenu(appTexts::windowMenu);
    QAction* minimize = menu->addAction(appTexts::minimize);
    minimize->setShortcut(Qt::CTRL | Qt::Key_M);
    QObject::connect(minimize, &QAction::triggered, &window, [&window] {
        // Minimizing would show one that is closed.
        if (window.isVisible()) {
            window.showMinimized();
        }
    });
    menu->addAction(appTexts::zoom)->setEnabled(false);
}

}  // namespace tavrel
