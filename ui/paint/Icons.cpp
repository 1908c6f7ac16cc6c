#include "ui/paint/Icons.h"

#include <QSvgRenderer>
#include <algorithm>

#include "ui/paint/Drawing.h"

// The macro that registers a library's resources must be used outside of any namespace.
static void registerIcons() {
    Q_INIT_RESOURCE(icons);
}

namespace tavrel {
namespace {

QString fileOf(Icon icon) {
    switch (icon) {
        case Icon::arrowClockwise:
            return QStringLiteral("arrow.clockwise");
        case Icon::display:
            return QStringLiteral("display");
        case Icon::displayWithWarning:
            return QStringLiteral("display.trianglebadge.exclamationmark");
        case Icon::laptopComputer:
            return QStringLiteral("laptopcomputer");
        case Icon::lockFill:
            return QStringLiteral("lock.fill");
        case Icon::sunMaxFill:
            return QStringLiteral("sun.max.fill");
    }
    return {};
}

}  // namespace

void paintIcon(QPainter& painter, Icon icon, const QRectF& rect, const QColor& color) {
    registerIcons();
    QSvgRenderer renderer(QStringLiteral(":/tavrel/icons/%1.svg").arg(fileOf(icon)));
    const double side = std::min(rect.width(), rect.height());
    QRectF square(0, 0, side, side);
    square.moveCenter(rect.center());

    paintLayer(painter, square, color.alphaF(), [&](QPainter& layer) {
        layer.setRenderHint(QPainter::Antialiasing);
        renderer.render(&layer, square);
        layer.setCompositionMode(QPainter::CompositionMode_SourceIn);
        layer.fillRect(square, QColor(color.rgb()));
    });
}

}  // namespace tavrel
