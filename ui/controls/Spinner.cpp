#include "ui/controls/Spinner.h"

#include <QPainter>
#include <QTimerEvent>

#include "ui/paint/Drawing.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr int bars = 8;
constexpr int millisecondsPerStep = 100;
constexpr double innerRadius = 3.3;
constexpr double outerRadius = 6.5;
constexpr double barWidth = 1.7;
constexpr double faintestOpacity = 0.12;
constexpr double strongestOpacity = 0.88;

}  // namespace

Spinner::Spinner(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    resize(sizeHint());
}

void Spinner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QRectF(rect()).center());
    for (int bar = 0; bar < bars; ++bar) {
        const int age = (step_ + bars - 1 - bar) % bars;
        const double opacity =
            strongestOpacity - (strongestOpacity - faintestOpacity) * age / (bars - 1);
        painter.setPen(QPen(theme::white(opacity), barWidth, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.rotate(fullTurn * bar / bars);
        painter.drawLine(QPointF(0, -innerRadius), QPointF(0, -outerRadius));
        painter.restore();
    }
}

void Spinner::showEvent(QShowEvent* event) {
    timer_.start(millisecondsPerStep, this);
    QWidget::showEvent(event);
}

void Spinner::hideEvent(QHideEvent* event) {
    timer_.stop();
    step_ = 0;
    QWidget::hideEvent(event);
}

void Spinner::timerEvent(QTimerEvent* event) {
    if (event->timerId() == timer_.timerId()) {
        step_ = (step_ + 1) % bars;
        update();
    }
}

}  // namespace tavrel
