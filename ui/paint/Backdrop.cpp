#include "ui/paint/Backdrop.h"

#include <QImage>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

using Rgb = std::array<double, 3>;

constexpr Rgb topLeading{0.045, 0.06, 0.1};
constexpr Rgb bottomTrailing{0.085, 0.095, 0.15};

constexpr double glowDiameter = 300;
constexpr double glowBlurRadius = 65;
constexpr double glowOpacity = 0.18;
/// From the middle of the window.
constexpr double glowOffsetX = 190;
constexpr double glowOffsetY = -180;

/// A value in [-0.5, 0.5) that looks random and is the same each time.
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

Backdrop::Backdrop() : glow_(glowDiameter / 2, glowBlurRadius) {}

const QPixmap& Backdrop::pixmap(const QSize& size, double devicePixelRatio) {
    if (size != size_ || pixmap_.devicePixelRatio() != devicePixelRatio) {
        pixmap_ = QPixmap::fromImage(render(size, devicePixelRatio, glow_));
        size_ = size;
    }
    return pixmap_;
}

}  // namespace tavrel
