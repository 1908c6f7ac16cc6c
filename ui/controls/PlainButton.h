#pragma once

#include "ui/controls/Control.h"

namespace tavrel {

/// A button without a bezel: all it shows is what its maker draws on its face. Under the
/// pointer its fill is a little stronger, disabled it is drawn at half strength as a
/// whole, and a press has no look of its own.
class PlainButton : public Control {
    Q_OBJECT

protected:
    using Control::Control;

    /// Draws the face, as it looks when enabled, on `face`.
    virtual void paintFace(QPainter& painter, const QRectF& face) const = 0;

    /// The opacity of the white fill behind the label.
    double fillOpacity() const;

    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tavrel
