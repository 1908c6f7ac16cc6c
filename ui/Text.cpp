#include "ui/Text.h"

#include <QEvent>
#include <QPainter>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel {

Text::Text(const theme::FontSpec& font, const QColor& color, QWidget* parent)
    : QLabel(parent), spec_(font) {
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setColor(color);
    applyFont();
}

void Text::setColor(const QColor& color) {
    if (color != this->color()) {
        QPalette changed = palette();
        changed.setColor(QPalette::All, QPalette::WindowText, color);
        setPalette(changed);
    }
}

QColor Text::color() const { return palette().color(QPalette::WindowText); }

void Text::setMaximumLines(int lines) {
    maximumLines_ = lines;
    updateGeometry();
    update();
}

void Text::setLeading(const QSizeF& size, double spacing, LeadingPaint paint) {
    leadingSize_ = size;
    leadingSpacing_ = spacing;
    paintLeading_ = std::move(paint);
    updateGeometry();
    update();
}

int Text::lineHeight() const {
    return static_cast<int>(std::ceil(QFontMetricsF(font()).height() - 0.25));
}

QSize Text::sizeHint() const {
    const double textWidth = QFontMetricsF(font()).horizontalAdvance(text());
    return {static_cast<int>(std::ceil(leadingWidth() + textWidth)), lineHeight()};
}

QSize Text::minimumSizeHint() const { return {0, lineHeight()}; }

int Text::heightForWidth(int width) const {
    const auto lines = linesAt(width - leadingWidth()).size();
    return lineHeight() * std::max(1, static_cast<int>(lines));
}

QStringList Text::visibleLines() const { return linesAt(width() - leadingWidth()); }

bool Text::event(QEvent* event) {
    // Another screen may have another resolution, and the size is in points of the design.
    if (event->type() == QEvent::ScreenChangeInternal) {
        applyFont();
    }
    return QLabel::event(event);
}

void Text::applyFont() { setFont(theme::font(spec_, logicalDpiY())); }

double Text::leadingWidth() const {
    return paintLeading_ ? leadingSize_.width() + leadingSpacing_ : 0;
}

QStringList Text::linesAt(double width) const {
    const QFontMetricsF metrics(font());
    const auto elided = [&](QString rest) {
        rest.replace(QChar::LineSeparator, QChar::Space);
        // The width of a label that just fits may fall short by a rounding.
        return metrics.elidedText(rest, Qt::ElideRight, width + 0.5);
    };
    QString whole = text();
    whole.replace(u'\n', QChar::LineSeparator);
    if (maximumLines_ == 1) {
        return whole.isEmpty() ? QStringList{} : QStringList{elided(whole)};
    }

    QStringList lines;
    QTextLayout layout(whole, font());
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        if (lines.size() == maximumLines_ - 1) {
            lines += elided(whole.mid(line.textStart()));
            break;
        }
        lines += whole.mid(line.textStart(), line.textLength()).trimmed();
    }
    layout.endLayout();
    return lines;
}

void Text::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color());

    const QFontMetricsF metrics(font());
    const QStringList lines = visibleLines();
    const double lineStep = metrics.height();
    const double textHeight = lineStep * std::max(1.0, static_cast<double>(lines.size()));
    double baseline = (height() - textHeight) / 2 + metrics.ascent();

    double left = 0;
    if (paintLeading_) {
        const double top = (height() - leadingSize_.height()) / 2;
        paintLeading_(painter, QRectF({0, top}, leadingSize_));
        left = leadingWidth();
    }
    for (const QString& line : lines) {
        double x = left;
        if (alignment().testFlag(Qt::AlignHCenter)) {
            x += (width() - left - metrics.horizontalAdvance(line)) / 2;
        } else if (alignment().testFlag(Qt::AlignRight)) {
            x += width() - left - metrics.horizontalAdvance(line);
        }
        painter.drawText(QPointF(x, baseline), line);
        baseline += lineStep;
    }
}

}  // namespace tavrel
