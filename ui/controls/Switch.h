#pragma once

#include <QVariantAnimation>

#include "ui/controls/Control.h"

namespace tavrel {

/// A large on/off switch that shows a state of the model and never changes it.
///
/// `isChecked()` is the model's state, as last given to `setOn`. A flip by the user is
/// signalled and moves the knob to the other side; if the model has not followed by the
/// time it gets there, it moves back.
class Switch : public Control {
    Q_OBJECT

public:
    explicit Switch(QWidget* parent);

    static constexpr QSize faceSize{46, 26};

    void setOn(bool isOn);

    /// Where the knob is drawn: 0 is off, 1 is on.
    double knobPosition() const { return knobPosition_; }
    bool isMoving() const { return travel_.state() == QAbstractAnimation::Running; }

Q_SIGNALS:
    /// The user asks for this position. Emitted once for each flip.
    void flipped(bool wantsOn);

protected:
    QPainterPath facePath(const QRectF& face) const override;
    void paintFace(QPainter& painter, const QRectF& track) const override;
    void hideEvent(QHideEvent* event) override;

private:
    void flip();
    void animateKnobTo(double position);
    void stopKnob();
    void setKnobPosition(double position);

    QVariantAnimation travel_;
    double knobPosition_ = 0;
};

}  // namespace tavrel
