#include <QPainter>
#include <QPixmap>

#include "app/Tray.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {

namespace {

QPixmap drawn(int side, bool isSomethingOff) {
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF whole(0, 0, side, side);

    // A ground of its own: a panel may be light or dark.
    painter.setBrush(QColor(94, 92, 230));
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

}  // namespace

QIcon trayIcon(bool isSomethingOff) {
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 48, 64}) {
        icon.addPixmap(drawn(side, isSomethingOff));
    }
    return icon;
}

}  // namespace tavrel
