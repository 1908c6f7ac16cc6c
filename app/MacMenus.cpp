#include "app/MacMenus.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>

namespace tavrel {

void addMacFileMenu(QMenuBar& menuBar, QWidget& window) {
    QMenu* file = menuBar.addMenu(QStringLiteral("File"));
    QAction* close = file->addAction(QStringLiteral("Close"));
    close->setShortcut(Qt::CTRL | Qt::Key_W);
    QObject::connect(close, &QAction::triggered, &window, &QWidget::close);
}

void addMacWindowMenu(QMenuBar& menuBar, QWidget& window) {
    QMenu* menu = menuBar.addMenu(QStringLiteral("Window"));
    QAction* minimize = menu->addAction(QStringLiteral("Minimize"));
    minimize->setShortcut(Qt::CTRL | Qt::Key_M);
    QObject::connect(minimize, &QAction::triggered, &window, [&window] {
        // Minimizing would show one that is closed.
        if (window.isVisible()) {
            window.showMinimized();
        }
    });
    menu->addAction(QStringLiteral("Zoom"))->setEnabled(false);
}

}  // namespace tavrel
