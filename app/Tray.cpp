#include "app/Tray.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <QApplication>

#include "app/BringToFront.h"

namespace tavrel {

namespace {

/// Every text of the tray, in one place as those of the view are.
namespace trayTexts {

const QString show = QStringLiteral("Show");
const QString wakeBothDisplays = QStringLiteral("Wake Both Displays");
const QString refresh = QStringLiteral("Refresh");
const QString quit = QStringLiteral("Quit");
const QString allOn = QStringLiteral("All displays are on");
const QString someOff = QStringLiteral("Some displays are off");

}  // namespace trayTexts

}  // namespace

Tray::Tray(QWidget& window, std::shared_ptr<DisplayController> controller,
           std::unique_ptr<TrayHost> host)
    : window_(window), controller_(std::move(controller)), host_(std::move(host)) {
    connect(menu_.addAction(trayTexts::show), &QAction::triggered, this,
            [this] { bringToFront(window_, {}); });
    connect(menu_.addAction(trayTexts::wakeBothDisplays), &QAction::triggered, this,
            [this] { controller_->wakeAll(); });
    connect(menu_.addAction(trayTexts::refresh), &QAction::triggered, this,
            [this] { controller_->refresh(std::nullopt); });
    menu_.addSeparator();
    connect(menu_.addAction(trayTexts::quit), &QAction::triggered, qApp, &QCoreApplication::quit);

    stateTimer_.setSingleShot(true);
    connect(&stateTimer_, &QTimer::timeout, this, &Tray::showState);
    subscription_ = controller_->objectWillChange().subscribe([this] { stateTimer_.start(0); });
    host_->observe([this] { follow(); });
    follow();
}

void Tray::follow() {
    const bool isPresent = host_->isPresent();
    QApplication::setQuitOnLastWindowClosed(!isPresent);
    if (!isPresent) {
        icon_.reset();
        if (!window_.isVisible()) {
            window_.show();
        }
        return;
    }
    // Anew each time: a watcher that has come back knows nothing of us.
    icon_ = std::make_unique<QSystemTrayIcon>();
    connect(icon_.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    bringToFront(window_, {});
                }
            });
    icon_->setContextMenu(&menu_);
    showState();
    icon_->show();
}

void Tray::showState() {
    if (icon_ == nullptr) {
        return;
    }
    const auto& displays = controller_->displays();
    const bool isSomethingOff =
        std::any_of(displays.begin(), displays.end(),
                    [](const DisplayDevice& display) { return !display.isOn; });
    icon_->setIcon(trayIcon(isSomethingOff));
    icon_->setToolTip(isSomethingOff ? trayTexts::someOff : trayTexts::allOn);
}

}  // namespace tavrel
