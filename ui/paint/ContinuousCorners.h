#pragma once

#include <QPainterPath>
#include <QRectF>

namespace tavrel {

/// `rect` with continuous corners: each is a superellipse that leaves the straight sides
/// without a jump in curvature and meets an arc of `radius` at the corner's middle. It
/// starts half a radius earlier than the arc, or as early as the sides allow.
QPainterPath continuousRoundedRect(const QRectF& rect, double radius);

}  // namespace tavrel
