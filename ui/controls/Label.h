#pragma once

#include <QLabel>
#include <functional>

#include "ui/paint/DesignFont.h"

namespace tavrel {

/// Plain text in one font and colour, on a limited number of lines, with an ellipsis where
/// it is cut. It does not react to the mouse.
///
/// `text()` is always the whole text, and that is what assistive technology reads.
class Label : public QLabel {
    Q_OBJECT

public:
    Label(const theme::FontSpec& font, const QColor& color, QWidget* parent);

    const theme::FontSpec& fontSpec() const { return font_.spec(); }

    void setFontSpec(const theme::FontSpec& font);

    void setColor(const QColor& color);
    QColor color() const;

    /// Breaks the text into at most this many lines. One by default.
    void setMaximumLines(int lines);

    /// Draws something of `size` before the text, vertically centred and `spacing` away
    /// from it. `paint` gets the place to draw in.
    using PrefixPaint = std::function<void(QPainter&, const QRectF& place)>;
    void setPrefix(const QSizeF& size, double spacing, PrefixPaint paint);

    /// The height of one line, in whole pixels.
    int lineHeight() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    /// As many lines as the text needs and may have at this width; one for an empty text.
    int heightForWidth(int width) const override;

    /// The lines as they are drawn at the current width.
    QStringList visibleLines() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double prefixWidth() const;

    DesignFont font_;
    int maximumLines_ = 1;
    QSizeF prefixSize_{0, 0};
    double prefixSpacing_ = 0;
    PrefixPaint paintPrefix_;
};

}  // namespace tavrel
