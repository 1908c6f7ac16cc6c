#include "ui/controls/Switch.h"

#include <QPainter>
#include <cmath>

#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr double knobInset = 2;
constexpr int travelMilliseconds = 180;
constexpr double offTrackOpacity = 0.16;
constexpr double hoveredOffTrackOpacity = 0.22;
constexpr int hoverLightness = 108;

QColor mixed(const QColor& off, const QColor& on, double part) {
    const auto mix = [part](float a, float b) { return a + (b - a) * static_cast<float>(part); };
    return QColor::fromRgbF(mix(off.redF(), on.redF()), mix(off.greenF(), on.greenF()),
                            mix(off.blueF(), on.blueF()), mix(off.alphaF(), on.alphaF()));
}

}  // namespace

Switch::Switch(QWidget* parent) : Control(faceSize, parent) {
    setCheckable(true);
    travel_.setDuration(travelMilliseconds);
    travel_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&travel_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { setKnobPosition(value.toDouble()); });
    connect(&travel_, &QVariantAnimation::finished, this, [this] { animateKnobTo(isChecked()); });
    connect(this, &Control::activated, this, &Switch::flip);
}

void Switch::setOn(bool isOn) {
    setChecked(isOn);
    if (!isVisible()) {
        stopKnob();
    } else if (!isMoving()) {
        animateKnobTo(isOn);
    }
}

void Switch::flip() {
    const bool wantsOn = !isChecked();
    animateKnobTo(wantsOn);
    Q_EMIT flipped(wantsOn);
}

void Switch::animateKnobTo(double position) {
    travel_.stop();
    if (position == knobPosition_) {
        return;
    }
    travel_.setStartValue(knobPosition_);
    travel_.setEndValue(position);
    travel_.start();
}

void Switch::stopKnob() {
    travel_.stop();
    setKnobPosition(isChecked());
}

void Switch::setKnobPosition(double position) {
    if (position != knobPosition_) {
        knobPosition_ = position;
        update();
    }
}

QPainterPath Switch::facePath(const QRectF& face) const {
    QPainterPath path;
    path.addRoundedRect(face, face.height() / 2, face.height() / 2);
    return path;
}

void Switch::hideEvent(QHideEvent* event) {
    stopKnob();
    Control::hideEvent(event);
}

void Switch::paintFace(QPainter& painter, const QRectF& track) const {
    const QPainterPath outline = facePath(track);
    const QColor off = theme::white(isHovered() ? hoveredOffTrackOpacity : offTrackOpacity);
    const QColor on = isHovered() ? theme::blue.lighter(hoverLightness) : theme::blue;
    painter.setPen(Qt::NoPen);
    painter.setBrush(mixed(off, on, knobPosition_));
    painter.drawPath(outline);

    const double diameter = track.height() - 2 * knobInset;
    const double travel = track.width() - 2 * knobInset - diameter;
    const QRectF knob(track.left() + knobInset + travel * knobPosition_, track.top() + knobInset,
                      diameter, diameter);

    // The knob's soft shadow, kept inside the track.
    painter.save();
    painter.setClipPath(outline);
    for (const double spread : {1.6, 1.1, 0.6}) {
        painter.setBrush(theme::withAlpha(Qt::black, 0.07));
        painter.drawEllipse(knob.adjusted(-spread, -spread, spread, spread).translated(0, 0.6));
    }
    painter.restore();

    painter.setBrush(theme::white());
    painter.drawEllipse(knob);
}

}  // namespace tavrel
