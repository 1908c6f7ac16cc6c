#pragma once

#include <QLabel>
#include <functional>

#include "ui/paint/DesignFont.h"

namespace tavrel {

/// A text of the screen: plain, in one font and colour, on at most so many lines, with an
/// ellipsis where it is cut.
///
/// `text()` is always the whole text, and so is what assistive technology reads. The
/// screen's text is not interactive.
class Label : public QLabel {
    Q_OBJECT

public:
    Label(const theme::FontSpec& font, const QColor& color, QWidget* parent);

    const theme::FontSpec& fontSpec() const { return font_.spec(); }

    void setColor(const QColor& color);
    QColor color() const;

    /// Breaks the text into at most this many lines. One by default.
    void setMaximumLines(int lines);

    /// Draws something of `size` before the first letter, centred to the text's height,
    /// with `spacing` between them. `paint` gets the place to draw in.
    using LeadingPaint = std::function<void(QPainter&, const QRectF& place)>;
    void setLeading(const QSizeF& size, double spacing, LeadingPaint paint);

    /// The height of one line, in whole pixels.
    int lineHeight() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    /// As many lines as the text needs and may have at this width; one for an empty text.
    int heightForWidth(int width) const override;

    /// What can be read at the present width, one entry for each line.
    QStringList visibleLines() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double leadingWidth() const;

    DesignFont font_;
    int maximumLines_ = 1;
    QSizeF leadingSize_{0, 0};
    double leadingSpacing_ = 0;
    LeadingPaint paintLeading_;
};

}  // namespace tavrel
