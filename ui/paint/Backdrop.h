#pragma once

#include <QPixmap>
#include <QSize>
#include <vector>

namespace tavrel {

/// A disc blurred by a Gaussian: how much of it is left at each distance from its centre.
///
/// Computed, not approximated by blurring pixels, so it has no steps of its own. Distances
/// are in points.
class Glow {
public:
    /// A disc of `discRadius` blurred with the standard deviation `blurRadius`.
    Glow(double discRadius, double blurRadius);

    /// 1 is the full colour of the disc, 0 nothing; falls steadily outwards.
    double strengthAt(double distance) const;

private:
    std::vector<double> samples_;
};

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
