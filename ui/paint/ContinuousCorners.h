#pragma once

#include <QPainterPath>
#include <QRectF>

namespace tavrel {

/// `rect` with corners of the continuous kind: each is a superellipse that leaves the
/// straight sides without a jump in curvature, and passes where an arc of `radius` would
/// at the corner's middle. It therefore starts half a radius earlier than the arc would;
/// where the sides are too short for that, as early as they allow.
QPainterPath continuousRoundedRect(const QRectF& rect, double radius);

}  // namespace tavrel
