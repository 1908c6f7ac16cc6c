#pragma once

#include <QPainter>
#include <QPainterPath>
#include <QRectF>
#include <functional>

namespace tavrel {

/// In degrees, as painters count.
inline constexpr double fullTurn = 360;

/// `rect` with continuous corners: each is a superellipse that leaves the straight sides
/// without a jump in curvature and meets an arc of `radius` at the corner's middle. It
/// starts half a radius earlier than the arc, or as early as the sides allow.
QPainterPath continuousRoundedRect(const QRectF& rect, double radius);

/// Paints something as a whole: `paint` draws into a transparent layer in the painter's
/// own coordinates, and the layer is then drawn at `opacity`, so that parts that overlap
/// do not show through each other. The layer has the device's resolution, whatever scale
/// or rotation the painter has, so that nothing gets blurred.
///
/// `bounds` encloses all that `paint` draws.
void paintLayer(QPainter& painter, const QRectF& bounds, double opacity,
                const std::function<void(QPainter&)>& paint);

}  // namespace tavrel
