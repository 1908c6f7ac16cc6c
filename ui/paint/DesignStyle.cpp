#include "ui/paint/DesignStyle.h"

#include <QIcon>
#include <QPainter>
#include <QPixmap>

#include "ui/paint/Theme.h"

namespace tavrel::theme {

namespace {

QIcon moreArrow(const QColor& color) {
    constexpr int side = 16;
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const double left : {4.0, 8.5}) {
        painter.drawPolyline(QPolygonF{{left, 4.5}, {left + 3.5, 8}, {left, 11.5}});
    }
    return QIcon(picture);
}

}  // namespace

DesignStyle::DesignStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

QIcon DesignStyle::standardIcon(StandardPixmap which, const QStyleOption* option,
                                const QWidget* widget) const {
    if (which == SP_ToolBarHorizontalExtensionButton) {
        return moreArrow(white(0.72));
    }
    return QProxyStyle::standardIcon(which, option, widget);
}

}  // namespace tavrel::theme
