#include "ui/paint/Layer.h"

#include <QImage>

namespace tavrel {

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
