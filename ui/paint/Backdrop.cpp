#include "ui/paint/Backdrop.h"

#include <QImage>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>

#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr double samplesPerPoint = 1;
/// How many standard deviations beyond the disc's edge the glow ends: less than a
/// thousandth of a colour step is left there.
constexpr double reach = 5;
constexpr int strips = 128;

/// The part of a Gaussian centred at 0 that lies between `from` and `to`.
double gaussianBetween(double from, double to, double sigma) {
    const double scale = 1 / (sigma * std::numbers::sqrt2);
    return 0.5 * (std::erf(to * scale) - std::erf(from * scale));
}

/// The weight over the disc of a Gaussian centred `distance` away from the disc's centre.
/// The disc is cut into strips parallel to the line between both centres.
double blurredDisc(double distance, double radius, double sigma) {
    double sum = 0;
    for (int strip = 0; strip < strips; ++strip) {
        const double from = radius * (2.0 * strip / strips - 1);
        const double to = radius * (2.0 * (strip + 1) / strips - 1);
        const double y = (from + to) / 2;
        const double halfChord = std::sqrt(radius * radius - y * y);
        sum += gaussianBetween(from, to, sigma) *
               gaussianBetween(-halfChord - distance, halfChord - distance, sigma);
    }
    return sum;
}

using Rgb = std::array<double, 3>;

constexpr Rgb topLeading{0.045, 0.06, 0.1};
constexpr Rgb bottomTrailing{0.085, 0.095, 0.15};

constexpr double glowDiameter = 300;
constexpr double glowBlurRadius = 65;
constexpr double glowOpacity = 0.18;
/// From the middle of the window.
constexpr double glowOffsetX = 190;
constexpr double glowOffsetY = -180;

/// A value in [-0.5, 0.5) that looks random but is always the same for these arguments.
double noise(std::uint32_t x, std::uint32_t y, std::uint32_t channel) {
    std::uint32_t bits = x * 0x9E3779B1U ^ y * 0x85EBCA77U ^ (channel + 1) * 0xC2B2AE3DU;
    bits = (bits ^ bits >> 15U) * 0x2C1B3C6DU;
    bits = (bits ^ bits >> 12U) * 0x297A2D39U;
    bits ^= bits >> 15U;
    return bits / 4294967296.0 - 0.5;
}

int dithered(double component, double noise) {
    return std::clamp(static_cast<int>(std::lround(component * 255 + noise)), 0, 255);
}

QImage render(const QSize& size, double ratio, const Glow& glow) {
    QImage image((QSizeF(size) * ratio).toSize(), QImage::Format_RGB32);
    const double width = size.width();
    const double height = size.height();
    const Rgb glowColor{theme::indigo.redF(), theme::indigo.greenF(), theme::indigo.blueF()};

    for (int row = 0; row < image.height(); ++row) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(row));
        const double y = (row + 0.5) / ratio;
        const double glowY = y - (height / 2 + glowOffsetY);
        for (int column = 0; column < image.width(); ++column) {
            const double x = (column + 0.5) / ratio;
            const double along = (x * width + y * height) / (width * width + height * height);
            const double glowX = x - (width / 2 + glowOffsetX);
            const double alpha = glowOpacity * glow.strengthAt(std::hypot(glowX, glowY));
            std::array<int, 3> pixel{};
            for (std::uint32_t c = 0; c < pixel.size(); ++c) {
                const double base = topLeading[c] + (bottomTrailing[c] - topLeading[c]) * along;
                pixel[c] = dithered(
                    base * (1 - alpha) + glowColor[c] * alpha,
                    noise(static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(row), c));
            }
            line[column] = qRgb(pixel[0], pixel[1], pixel[2]);
        }
    }
    image.setDevicePixelRatio(ratio);
    return image;
}

}  // namespace

Glow::Glow(double discRadius, double blurRadius) {
    const double farthest = discRadius + reach * blurRadius;
    const auto count = static_cast<std::size_t>(std::ceil(farthest * samplesPerPoint));
    samples_.reserve(count + 1);
    for (std::size_t i = 0; i < count; ++i) {
        const double distance = static_cast<double>(i) / samplesPerPoint;
        samples_.push_back(blurredDisc(distance, discRadius, blurRadius));
    }
    samples_.push_back(0);
}

double Glow::strengthAt(double distance) const {
    const double at = std::abs(distance) * samplesPerPoint;
    const auto index = static_cast<std::size_t>(at);
    if (index + 1 >= samples_.size()) {
        return 0;
    }
    const double part = at - static_cast<double>(index);
    return samples_[index] * (1 - part) + samples_[index + 1] * part;
}

Backdrop::Backdrop() : glow_(glowDiameter / 2, glowBlurRadius) {}

const QPixmap& Backdrop::pixmap(const QSize& size, double devicePixelRatio) {
    if (size != size_ || pixmap_.devicePixelRatio() != devicePixelRatio) {
        pixmap_ = QPixmap::fromImage(render(size, devicePixelRatio, glow_));
        size_ = size;
    }
    return pixmap_;
}

}  // namespace tavrel
