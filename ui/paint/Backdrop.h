#pragma once

#include <QImage>
#include <QRect>
#include <QSize>
#include <cstddef>
#include <cstdint>
#include <vector>

class QPainter;

namespace tavrel {

/// A disc blurred by a Gaussian, given as its strength at each distance from its centre.
///
/// Computed instead of made by blurring pixels, so that it adds no bands of its own.
/// Distances are in points.
class Glow {
public:
    /// A disc of `discRadius` blurred with the standard deviation `blurRadius`.
    Glow(double discRadius, double blurRadius);

    /// From 1, the disc's full colour, down to 0. Never rises with the distance, which is not
    /// negative. Asked for each pixel, so it stands here.
    float strengthAt(float distance) const {
        const float at = distance * samplesPerPoint;
        const auto index = static_cast<std::size_t>(static_cast<std::int32_t>(at));
        if (index + 1 >= samples_.size()) {
            return 0;
        }
        const float part = at - static_cast<float>(static_cast<std::int32_t>(at));
        return samples_[index] + (samples_[index + 1] - samples_[index]) * part;
    }

private:
    /// A straight line between two of them is right to less than a hundredth of a colour step.
    static constexpr float samplesPerPoint = 0.25F;

    std::vector<float> samples_;
};

/// The window's background: a dark gradient from the top left to the bottom right corner,
/// and an indigo glow in the upper right.
///
/// Both are computed together at a precision far below one colour step and then dithered,
/// so that neither shows bands.
class Backdrop {
public:
    Backdrop();
    /// With a first picture of the whole ready to be painted; on any thread.
    Backdrop(const QSize& size, double ratio);

    /// A part of the background of a window of `size` points, in pixels of a device that has
    /// `ratio` of them to the point. Each part is what the whole shows there.
    QImage image(const QSize& size, double ratio, const QRect& part) const;

    /// Paints what is `exposed` of it, in points. Nothing is kept, not even what was ready: it is
    /// computed faster than the window is shown, and a picture of it would take as much memory as
    /// the window.
    void paint(QPainter& painter, const QSize& size, const QRect& exposed);

private:
    Glow glow_;
    QImage first_;
};

}  // namespace tavrel
