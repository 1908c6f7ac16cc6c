#include "ui/paint/Drawing.h"

#include <QImage>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tavrel {
namespace {

constexpr double extentPerRadius = 1.5;
/// Enough that no edge shows at four times the normal scale.
constexpr int stepsPerCorner = 32;

/// The points of one corner in the unit square: from (0, 1) on the vertical side to
/// (1, 0) on the horizontal one, with the corner itself at (0, 0).
std::array<QPointF, stepsPerCorner + 1> unitCorner(double middle) {
    // |1-x|^n + |1-y|^n = 1, with n such that x = y = middle lies on the curve.
    const double exponent = std::numbers::ln2 / -std::log(1 - middle);
    std::array<QPointF, stepsPerCorner + 1> points;
    for (int step = 0; step <= stepsPerCorner; ++step) {
        const double angle = std::numbers::pi / 2 * step / stepsPerCorner;
        const double x = 1 - std::pow(std::max(0.0, std::cos(angle)), 2 / exponent);
        const double y = 1 - std::pow(std::max(0.0, std::sin(angle)), 2 / exponent);
        points[static_cast<std::size_t>(step)] = {x, y};
    }
    return points;
}

}  // namespace

QPainterPath continuousRoundedRect(const QRectF& rect, double radius) {
    QPainterPath path;
    const double shortestHalf = std::min(rect.width(), rect.height()) / 2;
    const double usedRadius = std::min(radius, shortestHalf);
    const double extent = std::min(usedRadius * extentPerRadius, shortestHalf);
    if (extent <= 0) {
        path.addRect(rect);
        return path;
    }
    const double middle = usedRadius * (1 - std::numbers::sqrt2 / 2) / extent;
    const auto corner = unitCorner(middle);

    const auto add = [&](const QPointF& at, double dx, double dy, bool backwards) {
        for (std::size_t i = 0; i < corner.size(); ++i) {
            const QPointF& p = corner[backwards ? corner.size() - 1 - i : i];
            const QPointF point(at.x() + dx * p.x() * extent, at.y() + dy * p.y() * extent);
            if (path.elementCount() == 0) {
                path.moveTo(point);
            } else {
                path.lineTo(point);
            }
        }
    };
    add(rect.topLeft(), 1, 1, false);
    add(rect.topRight(), -1, 1, true);
    add(rect.bottomRight(), -1, -1, false);
    add(rect.bottomLeft(), 1, -1, true);
    path.closeSubpath();
    return path;
}

void paintLayer(QPainter& painter, const QRectF& bounds, double opacity,
                const std::function<void(QPainter&)>& paint) {
    const QTransform toDevice = painter.deviceTransform();
    const QRect pixels = toDevice.mapRect(bounds).toAlignedRect();
    if (pixels.isEmpty()) {
        return;
    }
    QImage layer(pixels.size(), QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    {
        QPainter layerPainter(&layer);
        layerPainter.setRenderHints(painter.renderHints());
        layerPainter.setFont(painter.font());
        layerPainter.setTransform(toDevice *
                                  QTransform::fromTranslate(-pixels.left(), -pixels.top()));
        paint(layerPainter);
    }
    painter.save();
    painter.setOpacity(painter.opacity() * opacity);
    painter.setTransform(toDevice.inverted(), true);
    painter.drawImage(pixels.topLeft(), layer);
    painter.restore();
}

}  // namespace tavrel
