#include "app/Tray.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include "app/ShowWindow.h"
#include "app/Texts.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {

namespace {

QPixmap drawnIcon(int side, bool isSomethingOff) {
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF whole(0, 0, side, side);

    // A ground of its own: a panel may be light or dark.
    painter.setBrush(theme::indigo);
    painter.drawRoundedRect(whole, 0.22 * side, 0.22 * side);
    const double margin = 0.14 * side;
    paintIcon(painter, Icon::display, whole.adjusted(margin, margin, -margin, -margin),
              theme::white(isSomethingOff ? 0.55 : 1));
    if (isSomethingOff) {
        painter.setBrush(theme::orange);
        const double dot = 0.44 * side;
        painter.drawEllipse(QRectF(side - dot, side - dot, dot, dot));
    }
    return picture;
}

QIcon trayIcon(bool isSomethingOff) {
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 48, 64}) {
        icon.addPixmap(drawnIcon(side, isSomethingOff));
    }
    return icon;
}

}  // namespace

Tray::Tray(QWidget& window, std::shared_ptr<DisplayController> controller,
           std::unique_ptr<TrayHost> host)
    : window_(window), controller_(std::move(controller)), host_(std::move(host)) {
    connect(menu_.addAction(appTexts::show), &QAction::triggered, this,
            [this] { bringToFront(window_, {}); });
    connect(menu_.addAction(appTexts::wakeBothDisplays), &QAction::triggered, this,
            [this] { controller_->wakeAll(); });
    connect(menu_.addAction(appTexts::refresh), &QAction::triggered, this,
            [this] { controller_->refresh(std::nullopt); });
    menu_.addSeparator();
    connect(menu_.addAction(appTexts::quit), &QAction::triggered, qApp, &QCoreApplication::quit);

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
    icon_->setToolTip(isSomethingOff ? appTexts::someOff : appTexts::allOn);
}

}  // namespace tavrel
