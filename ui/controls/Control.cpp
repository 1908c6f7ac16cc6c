#include "ui/controls/Control.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>

#include "ui/paint/Drawing.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr double ringWidth = 2;
/// From the face to the middle of the ring's stroke.
constexpr double ringDistance = Control::ringMargin - ringWidth / 2;
constexpr double ringOpacity = 0.9;

constexpr double fillOpacity = 0.08;
constexpr double hoveredFillOpacity = 0.13;

bool comesFromKeyboard(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

}  // namespace

Control::Control(const QSize& faceSize, QWidget* parent)
    : QAbstractButton(parent), faceSize_(faceSize) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    resize(sizeHint());
}

QRect Control::face() const {
    return rect().adjusted(ringMargin, ringMargin, -ringMargin, -ringMargin);
}

void Control::setFace(const QRect& face) {
    setGeometry(face.adjusted(-ringMargin, -ringMargin, ringMargin, ringMargin));
}

void Control::takeFocus(bool showingRing) {
    setFocus(Qt::OtherFocusReason);
    setShowsFocusRing(showingRing);
}

QSize Control::sizeHint() const {
    return faceSize_ + QSize(2 * ringMargin, 2 * ringMargin);
}

void Control::fillFace(QPainter& painter, const QRectF& face) const {
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme::white(isHovered() ? hoveredFillOpacity : fillOpacity));
    painter.drawPath(facePath(face));
}

void Control::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isEnabled()) {
        paintFace(painter, face());
    } else {
        // An outline reaches beyond the face.
        paintLayer(painter, rect(), theme::disabledOpacity,
                   [this](QPainter& layer) { paintFace(layer, face()); });
    }
    paintFocusRing(painter);
}

void Control::paintFocusRing(QPainter& painter) const {
    if (!showsFocusRing_ || !hasFocus()) {
        return;
    }
    const QRectF ring =
        QRectF(face()).adjusted(-ringDistance, -ringDistance, ringDistance, ringDistance);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme::withAlpha(theme::blue, ringOpacity), ringWidth));
    painter.drawPath(facePath(ring));
}

bool Control::hitButton(const QPoint& position) const {
    return facePath(face()).contains(position);
}

void Control::keyPressEvent(QKeyEvent* event) {
    setShowsFocusRing(true);
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (!event->isAutoRepeat()) {
            click();
        }
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

void Control::focusInEvent(QFocusEvent* event) {
    // A window that is activated again restores its focus, with the ring as it was.
    if (event->reason() != Qt::ActiveWindowFocusReason) {
        setShowsFocusRing(comesFromKeyboard(event->reason()));
    }
    QAbstractButton::focusInEvent(event);
}

void Control::focusOutEvent(QFocusEvent* event) {
    if (event->reason() != Qt::ActiveWindowFocusReason) {
        setShowsFocusRing(false);
    }
    QAbstractButton::focusOutEvent(event);
}

void Control::setShowsFocusRing(bool shows) {
    if (shows != showsFocusRing_) {
        showsFocusRing_ = shows;
        update();
    }
}

void ParkedFocus::park(Control& control) {
    if (control.window()->focusWidget() == &control) {
        owner_ = &control;
        showedRing_ = control.showsFocusRing();
        place_.setFocus(Qt::OtherFocusReason);
    }
}

void ParkedFocus::restore(Control& control) {
    if (owner_ != &control) {
        return;
    }
    owner_.clear();
    if (place_.window()->focusWidget() == &place_) {
        control.takeFocus(showedRing_);
    }
}

void ParkedFocus::setEnabled(Control& control, bool isEnabled) {
    if (isEnabled == control.isEnabled()) {
        return;
    }
    if (!isEnabled) {
        park(control);
    }
    control.setEnabled(isEnabled);
    if (isEnabled) {
        restore(control);
    }
}

}  // namespace tavrel
