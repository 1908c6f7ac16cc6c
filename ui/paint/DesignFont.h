#pragma once

#include <QFont>
#include <QPainter>
#include <QString>
#include <QStringList>

#include "ui/paint/Theme.h"

namespace tavrel {

/// A font of the design at its exact size.
///
/// Qt rounds a font's size to whole pixels, which would turn 11.5 into 12. This one is made
/// at twice its size, which is whole for all sizes of the design, and measured and drawn at
/// half scale; so it is also the same at any resolution. All lengths are in points.
class DesignFont {
public:
    explicit DesignFont(const theme::FontSpec& spec);

    const theme::FontSpec& spec() const { return spec_; }

    double width(const QString& text) const;
    double ascent() const;
    double descent() const;
    double lineHeight() const { return ascent() + descent(); }

    /// `text` as it is shown in `width`: broken into at most `maximumLines`, at line feeds
    /// and between words, the last one cut with an ellipsis if more would follow. Empty for
    /// an empty text.
    QStringList lines(const QString& text, double width, int maximumLines) const;

    /// Draws one line in the painter's pen.
    void draw(QPainter& painter, const QPointF& baseline, const QString& line) const;

private:
    theme::FontSpec spec_;
    QFont doubled_;
};

}  // namespace tavrel
