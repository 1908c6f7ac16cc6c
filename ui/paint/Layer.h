#pragma once

#include <QPainter>
#include <functional>

namespace tavrel {

/// Paints something as a whole: `paint` draws into a transparent layer in the painter's
/// own coordinates, and the layer is then drawn at `opacity`, so that parts that overlap
/// do not show through each other. The layer has the device's resolution, whatever scale
/// or rotation the painter has, so that nothing gets blurred.
///
/// `bounds` encloses all that `paint` draws.
void paintLayer(QPainter& painter, const QRectF& bounds, double opacity,
                const std::function<void(QPainter&)>& paint);

}  // namespace tavrel
