#pragma once

#include <QVariantAnimation>

#include "ui/controls/Control.h"

namespace tavrel {

/// The round button of the header. Its arrow turns steadily while a refresh is running,
/// and completes the turn when that ends.
class RefreshButton : public Control {
    Q_OBJECT

public:
    /// `name` is its tooltip and what assistive technology calls it.
    RefreshButton(const QString& name, QWidget* parent);

    static constexpr int diameter = 32;

    void setSpinning(bool spins);
    bool isSpinning() const { return spins_; }
    /// How far the arrow is turned, in degrees clockwise; 0 when it does not move.
    double angle() const { return angle_; }
    /// Whether the arrow is turning, or completing its last turn.
    bool isMoving() const;

protected:
    QPainterPath facePath(const QRectF& face) const override;
    void paintFace(QPainter& painter, const QRectF& face) const override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void setAngle(double angle);

    QVariantAnimation spin_;
    QVariantAnimation completion_;
    bool spins_ = false;
    double angle_ = 0;
};

}  // namespace tavrel
