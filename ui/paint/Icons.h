#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>

namespace tavrel {

/// The symbols we draw, named after what each shows.
enum class Icon {
    arrowClockwise,
    display,
    displayWithWarning,
    laptopComputer,
    lockFill,
    sunMaxFill,
};

/// The side of the square that an icon set in a font of `fontSize` fills.
constexpr double iconSide(double fontSize) {
    return fontSize * 1.25;
}

/// Draws `icon` in `color` centred in `rect`, as large as fits, sharp at any scale and angle.
void paintIcon(QPainter& painter, Icon icon, const QRectF& rect, const QColor& color);

}  // namespace tavrel
