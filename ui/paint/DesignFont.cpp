#include "ui/paint/DesignFont.h"

#include <QFontMetricsF>
#include <QTextLayout>

namespace tavrel {
namespace {

constexpr double scale = theme::wholeScale;
/// Rounding may make a text slightly wider than it was measured.
constexpr double tolerance = 0.5;

}  // namespace

DesignFont::DesignFont(const theme::FontSpec& spec)
    : spec_(spec), doubled_(theme::font(spec, scale)) {}

double DesignFont::width(const QString& text) const {
    // A font that nothing is written in need not be loaded.
    return text.isEmpty() ? 0 : QFontMetricsF(doubled_).horizontalAdvance(text) / scale;
}

double DesignFont::ascent() const {
    return QFontMetricsF(doubled_).ascent() / scale;
}

double DesignFont::descent() const {
    return QFontMetricsF(doubled_).descent() / scale;
}

QStringList DesignFont::lines(const QString& text, double width, int maximumLines) const {
    const double room = (width + tolerance) * scale;
    QString whole = text;
    whole.replace(u'\n', QChar::LineSeparator);

    QStringList result;
    QTextLayout layout(whole, doubled_);
    layout.beginLayout();
    while (result.size() < maximumLines) {
        QTextLine line = layout.createLine();
        if (!line.isValid() || whole.isEmpty()) {
            break;
        }
        line.setLineWidth(room);
        if (result.size() == maximumLines - 1) {
            QString rest = whole.mid(line.textStart());
            rest.replace(QChar::LineSeparator, QChar::Space);
            result += QFontMetricsF(doubled_).elidedText(rest, Qt::ElideRight, room);
        } else {
            result += whole.mid(line.textStart(), line.textLength()).trimmed();
        }
    }
    layout.endLayout();
    return result;
}

void DesignFont::draw(QPainter& painter, const QPointF& baseline, const QString& line) const {
    painter.save();
    painter.translate(baseline);
    painter.scale(1 / scale, 1 / scale);
    painter.setFont(doubled_);
    painter.drawText(QPointF(0, 0), line);
    painter.restore();
}

}  // namespace tavrel
