#include "tests/e2e/FilmFrame.h"

#include <QFont>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>
#include <QString>

namespace tavrel::e2e {
namespace {

constexpr int margin = 20;
constexpr QSize monitorSize{144, 81};
constexpr int monitorGap = 24;
constexpr int standHeight = 14;
constexpr int numberSize = 30;
constexpr int windowTop = margin + monitorSize.height() + standHeight + margin;

const QColor ground(24, 25, 32);
const QColor bezel(58, 60, 74);
const QColor dark(10, 10, 14);
const QColor lightAbove(133, 131, 255);
const QColor lightBelow(56, 54, 168);

QFont numberFont() {
    QFont font(QStringLiteral("Inter"));
    font.setPixelSize(numberSize);
    font.setWeight(QFont::DemiBold);
    return font;
}

void drawMonitor(QPainter& painter, const QRect& frame, std::size_t number, bool isOn) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(bezel);
    painter.drawRoundedRect(frame, 7, 7);
    painter.drawRect(QRect(frame.center().x() - 5, frame.bottom(), 10, standHeight - 3));
    painter.drawRoundedRect(QRect(frame.center().x() - 28, frame.bottom() + standHeight - 4, 56, 4),
                            2, 2);

    const QRect screen = frame.adjusted(4, 4, -4, -4);
    QLinearGradient light(screen.topLeft(), screen.bottomLeft());
    light.setColorAt(0, lightAbove);
    light.setColorAt(1, lightBelow);
    painter.setBrush(isOn ? QBrush(light) : QBrush(dark));
    painter.drawRoundedRect(screen, 4, 4);
    painter.setFont(numberFont());
    painter.setPen(isOn ? QColor(Qt::white) : bezel);
    painter.drawText(screen, Qt::AlignCenter, QString::number(number));
}

void drawPointer(QPainter& painter, const QPointF& tip) {
    const QPolygonF arrow(
        {{0, 0}, {0, 17}, {4, 13.5}, {7, 20}, {9.6, 18.8}, {6.8, 12.5}, {12, 12}});
    QPainterPath outline;
    outline.addPolygon(arrow.translated(tip));
    outline.closeSubpath();
    painter.setPen(QPen(Qt::black, 1.2));
    painter.setBrush(Qt::white);
    painter.drawPath(outline);
}

}  // namespace

QImage draw(const Moment& moment) {
    const QSize window = moment.window.size();
    QImage picture(window.width() + 2 * margin, windowTop + window.height() + margin,
                   QImage::Format_RGB32);
    picture.fill(ground);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);

    const int count = static_cast<int>(moment.monitors.size());
    const int rowWidth = count * monitorSize.width() + (count - 1) * monitorGap;
    QRect frame({(picture.width() - rowWidth) / 2, margin}, monitorSize);
    for (std::size_t i = 0; i < moment.monitors.size(); ++i) {
        drawMonitor(painter, frame, i + 1, moment.monitors[i]);
        frame.translate(monitorSize.width() + monitorGap, 0);
    }
    const QPoint corner(margin, windowTop);
    painter.drawImage(corner, moment.window);
    drawPointer(painter, corner + moment.pointer);
    return picture;
}

}  // namespace tavrel::e2e
