#include "ui/controls/RefreshButton.h"

#include <QPainter>

#include "ui/paint/Drawing.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr int turnMilliseconds = 900;
constexpr int completionMilliseconds = 350;
constexpr double iconFontSize = 13;

}  // namespace

RefreshButton::RefreshButton(const QString& name, QWidget* parent)
    : Control({diameter, diameter}, parent) {
    setAccessibleName(name);
    setToolTip(name);

    spin_.setStartValue(0.0);
    spin_.setEndValue(fullTurn);
    spin_.setDuration(turnMilliseconds);
    spin_.setLoopCount(-1);
    completion_.setEndValue(fullTurn);
    completion_.setDuration(completionMilliseconds);
    completion_.setEasingCurve(QEasingCurve::InOutQuad);
    for (QVariantAnimation* animation : {&spin_, &completion_}) {
        connect(animation, &QVariantAnimation::valueChanged, this,
                [this](const QVariant& value) { setAngle(value.toDouble()); });
    }
}

void RefreshButton::setSpinning(bool spins) {
    if (spins == spins_) {
        return;
    }
    spins_ = spins;
    completion_.stop();
    spin_.stop();
    if (!isVisible()) {
        setAngle(0);
    } else if (spins) {
        spin_.start();
    } else if (angle_ != 0) {
        completion_.setStartValue(angle_);
        completion_.start();
    }
}

bool RefreshButton::isMoving() const {
    return spin_.state() == QAbstractAnimation::Running ||
           completion_.state() == QAbstractAnimation::Running;
}

QPainterPath RefreshButton::facePath(const QRectF& face) const {
    QPainterPath path;
    path.addEllipse(face);
    return path;
}

void RefreshButton::paintFace(QPainter& painter, const QRectF& face) const {
    fillFace(painter, face);

    constexpr double side = iconSide(iconFontSize);
    painter.save();
    painter.translate(face.center());
    painter.rotate(angle_);
    paintIcon(painter, Icon::arrowClockwise, {-side / 2, -side / 2, side, side}, theme::white());
    painter.restore();
}

void RefreshButton::showEvent(QShowEvent* event) {
    if (spins_) {
        spin_.start();
    }
    Control::showEvent(event);
}

void RefreshButton::hideEvent(QHideEvent* event) {
    spin_.stop();
    completion_.stop();
    setAngle(0);
    Control::hideEvent(event);
}

void RefreshButton::setAngle(double angle) {
    const double wrapped = angle >= fullTurn ? angle - fullTurn : angle;
    if (wrapped != angle_) {
        angle_ = wrapped;
        update();
    }
}

}  // namespace tavrel
