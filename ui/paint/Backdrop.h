#pragma once

#include <QPixmap>
#include <QSize>

#include "ui/paint/Glow.h"

namespace tavrel {

/// What lies behind everything in the window: a dark gradient from the top left to the
/// bottom right corner, and an indigo glow in the upper right.
///
/// Both are computed together at a precision far below one colour step and then dithered,
/// so that neither shows bands.
class Backdrop {
public:
    Backdrop();

    /// The picture for a window of `size` points, one pixel for each of the device's. It
    /// is kept until another size or ratio is asked for.
    const QPixmap& pixmap(const QSize& size, double devicePixelRatio);

private:
    Glow glow_;
    QPixmap pixmap_;
    QSize size_;
};

}  // namespace tavrel
