#include "ui/controls/Label.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel {
namespace {

/// A line may be this much higher than its whole pixels; no glyph reaches that far.
constexpr double allowedOverhang = 0.25;

}  // namespace

Label::Label(const theme::FontSpec& font, const QColor& color, QWidget* parent)
    : QLabel(parent), font_(font) {
    setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::NoTextInteraction);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setColor(color);
}

void Label::setFontSpec(const theme::FontSpec& font) {
    font_ = DesignFont(font);
    updateGeometry();
    update();
}

void Label::setColor(const QColor& color) {
    if (color != this->color()) {
        QPalette changed = palette();
        changed.setColor(QPalette::All, QPalette::WindowText, color);
        setPalette(changed);
    }
}

QColor Label::color() const {
    return palette().color(QPalette::WindowText);
}

void Label::setMaximumLines(int lines) {
    maximumLines_ = lines;
    updateGeometry();
    update();
}

void Label::setPrefix(const QSizeF& size, double spacing, PrefixPaint paint) {
    prefixSize_ = size;
    prefixSpacing_ = spacing;
    paintPrefix_ = std::move(paint);
    updateGeometry();
    update();
}

int Label::lineHeight() const {
    return static_cast<int>(std::ceil(font_.lineHeight() - allowedOverhang));
}

QSize Label::sizeHint() const {
    return {static_cast<int>(std::ceil(prefixWidth() + font_.width(text()))), lineHeight()};
}

QSize Label::minimumSizeHint() const {
    return {0, lineHeight()};
}

int Label::heightForWidth(int width) const {
    const auto lines = font_.lines(text(), width - prefixWidth(), maximumLines_).size();
    return static_cast<int>(std::ceil(
        font_.lineHeight() * std::max(1.0, static_cast<double>(lines)) - allowedOverhang));
}

QStringList Label::visibleLines() const {
    return font_.lines(text(), width() - prefixWidth(), maximumLines_);
}

double Label::prefixWidth() const {
    return paintPrefix_ ? prefixSize_.width() + prefixSpacing_ : 0;
}

void Label::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color());

    const QStringList lines = visibleLines();
    const double textHeight = font_.lineHeight() * static_cast<double>(lines.size());
    double baseline = (height() - textHeight) / 2 + font_.ascent();

    double left = 0;
    if (paintPrefix_) {
        const double top = (height() - prefixSize_.height()) / 2;
        paintPrefix_(painter, QRectF({0, top}, prefixSize_));
        left = prefixWidth();
    }
    for (const QString& line : lines) {
        double x = left;
        if (alignment().testFlag(Qt::AlignHCenter)) {
            x += (width() - left - font_.width(line)) / 2;
        }
        font_.draw(painter, {x, baseline}, line);
        baseline += font_.lineHeight();
    }
}

}  // namespace tavrel
