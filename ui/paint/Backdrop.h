#pragma once

#include <QPixmap>
#include <QSize>
#include <vector>

namespace tavrel {

/// A disc blurred by a Gaussian, given as its strength at each distance from its centre.
///
/// Computed instead of made by blurring pixels, so that it adds no bands of its own.
/// Distances are in points.
class Glow {
public:
    /// A disc of `discRadius` blurred with the standard deviation `blurRadius`.
    Glow(double discRadius, double blurRadius);

    /// From 1, the disc's full colour, down to 0. Never rises with the distance.
    double strengthAt(double distance) const;

private:
    std::vector<double> samples_;
};

/// The window's background: a dark gradient from the top left to the bottom right corner,
/// and an indigo glow in the upper right.
///
/// Both are computed together at a precision far below one colour step and then dithered,
/// so that neither shows bands.
class Backdrop {
public:
    Backdrop();

    /// The background of a window of `size` points, at the device's resolution. It is cached,
    /// and the reference valid, until another size or ratio is asked for.
    const QPixmap& pixmap(const QSize& size, double devicePixelRatio);

private:
    Glow glow_;
    QPixmap pixmap_;
    QSize size_;
};

}  // namespace tavrel
