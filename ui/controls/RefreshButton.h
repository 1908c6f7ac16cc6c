#pragma once

#include <QVariantAnimation>

#include "ui/controls/Control.h"

namespace tavrel {

/// The round button of the header. While a refresh is running it is turned steadily, and
/// when that ends it comes to rest upright.
class RefreshButton : public Control {
    Q_OBJECT

public:
    /// `name` is its tooltip and what assistive technology calls it.
    RefreshButton(const QString& name, QWidget* parent);

    static constexpr int diameter = 32;

    void setSpinning(bool spins);
    bool isSpinning() const { return spins_; }
    /// How far it is turned, in degrees clockwise; 0 at rest.
    double angle() const { return angle_; }
    /// Whether it is turning, or coming to rest.
    bool isMoving() const;

protected:
    QPainterPath facePath(const QRectF& face) const override;
    void paintFace(QPainter& painter, const QRectF& face) const override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void turnTo(double angle);

    QVariantAnimation spin_;
    QVariantAnimation comeToRest_;
    bool spins_ = false;
    double angle_ = 0;
};

}  // namespace tavrel
