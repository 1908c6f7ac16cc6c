#include "ui/paint/Backdrop.h"

#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <utility>

#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

/// How many standard deviations beyond the disc's edge the glow ends: less than a
/// thousandth of a colour step is left there.
constexpr double reach = 5;
constexpr int strips = 64;

/// The part of a Gaussian centred at 0 that lies between `from` and `to`.
double gaussianBetween(double from, double to, double sigma) {
    const double scale = 1 / (sigma * std::numbers::sqrt2);
    return 0.5 * (std::erf(to * scale) - std::erf(from * scale));
}

/// A strip of the disc, parallel to the line between the disc's centre and the Gaussian's.
struct Strip {
    double halfLength;
    double weight;
};

std::array<Strip, strips> stripsOf(double radius, double sigma) {
    std::array<Strip, strips> result{};
    for (int strip = 0; strip < strips; ++strip) {
        const double from = radius * (2.0 * strip / strips - 1);
        const double to = radius * (2.0 * (strip + 1) / strips - 1);
        const double y = (from + to) / 2;
        result[static_cast<std::size_t>(strip)] = {.halfLength = std::sqrt(radius * radius - y * y),
                                                   .weight = gaussianBetween(from, to, sigma)};
    }
    return result;
}

/// The weight over the disc of a Gaussian centred `distance` away from the disc's centre.
double blurredDisc(double distance, const std::array<Strip, strips>& disc, double sigma) {
    double sum = 0;
    for (const Strip& strip : disc) {
        sum += strip.weight *
               gaussianBetween(-strip.halfLength - distance, strip.halfLength - distance, sigma);
    }
    return sum;
}

using Rgb = std::array<float, 3>;

constexpr Rgb topLeading{0.045F, 0.06F, 0.1F};
constexpr Rgb bottomTrailing{0.085F, 0.095F, 0.15F};

constexpr double glowDiameter = 300;
constexpr double glowBlurRadius = 65;
constexpr float glowOpacity = 0.18F;
/// From the middle of the window.
constexpr float glowOffsetX = 190;
constexpr float glowOffsetY = -180;

/// Looks random but is always the same for these arguments.
std::uint32_t noise(std::uint32_t x, std::uint32_t y) {
    std::uint32_t bits = x * 0x9E3779B1U ^ y * 0x85EBCA77U;
    bits = (bits ^ bits >> 15U) * 0x2C1B3C6DU;
    bits = (bits ^ bits >> 12U) * 0x297A2D39U;
    return bits ^ bits >> 15U;
}

/// `component` in colour steps, rounded up or down at random; the nearer one step is, the more
/// often to that. Ten bits of `noise` decide. No colour of the backdrop comes near either end.
std::uint32_t dithered(float component, std::uint32_t noise) {
    constexpr float bitsOfNoise = 1024;
    const auto part = static_cast<float>(static_cast<std::int32_t>(noise & 1023U)) / bitsOfNoise;
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(component * 255 + part));
}

/// One row of the backdrop, worked out in several plain loops that the compiler can widen.
class RowPainter {
public:
    RowPainter(const QSize& size, double ratio, const QRect& part, const Glow& glow)
        : width_(static_cast<float>(size.width())),
          height_(static_cast<float>(size.height())),
          ratio_(static_cast<float>(ratio)),
          part_(part),
          glow_(glow),
          along_(static_cast<std::size_t>(part.width())),
          alpha_(along_.size()) {}

    /// Writes the row with this number in the whole window's picture.
    void paint(int row, QRgb* line) {
        const float y = (static_cast<float>(row) + 0.5F) / ratio_;
        const float glowY = y - (height_ / 2 + glowOffsetY);
        const float square = width_ * width_ + height_ * height_;
        for (std::size_t i = 0; i < along_.size(); ++i) {
            const float x =
                (static_cast<float>(part_.left() + static_cast<int>(i)) + 0.5F) / ratio_;
            const float glowX = x - (width_ / 2 + glowOffsetX);
            along_[i] = (x * width_ + y * height_) / square;
            alpha_[i] = glowX * glowX + glowY * glowY;
        }
        for (float& alpha : alpha_) {
            alpha = glowOpacity * glow_.strengthAt(std::sqrt(alpha));
        }
        const auto left = static_cast<std::uint32_t>(part_.left());
        for (std::size_t i = 0; i < along_.size(); ++i) {
            const std::uint32_t bits =
                noise(left + static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(row));
            line[i] = 0xFF000000U | component(i, 0, bits) << 16U |
                      component(i, 1, bits >> 11U) << 8U | component(i, 2, bits >> 22U);
        }
    }

private:
    std::uint32_t component(std::size_t i, std::size_t c, std::uint32_t bits) const {
        const float base = topLeading[c] + (bottomTrailing[c] - topLeading[c]) * along_[i];
        return dithered(base + (glowColor_[c] - base) * alpha_[i], bits);
    }

    const float width_;
    const float height_;
    const float ratio_;
    const QRect part_;
    const Glow& glow_;
    const Rgb glowColor_{theme::indigo.redF(), theme::indigo.greenF(), theme::indigo.blueF()};
    /// How far from one corner to the other.
    std::vector<float> along_;
    std::vector<float> alpha_;
};

/// Every pixel that it touches.
QRect pixelsOf(const QRect& points, double ratio) {
    return QRectF(points.x() * ratio, points.y() * ratio, points.width() * ratio,
                  points.height() * ratio)
        .toAlignedRect();
}

}  // namespace

Glow::Glow(double discRadius, double blurRadius) {
    const double farthest = discRadius + reach * blurRadius;
    const auto count = static_cast<std::size_t>(std::ceil(farthest * samplesPerPoint));
    samples_.reserve(count + 1);
    const auto disc = stripsOf(discRadius, blurRadius);
    for (std::size_t i = 0; i < count; ++i) {
        const double distance = static_cast<double>(i) / samplesPerPoint;
        samples_.push_back(static_cast<float>(blurredDisc(distance, disc, blurRadius)));
    }
    samples_.push_back(0);
}

Backdrop::Backdrop() : glow_(glowDiameter / 2, glowBlurRadius) {}

Backdrop::Backdrop(const QSize& size, double ratio) : Backdrop() {
    first_ = image(size, ratio, pixelsOf({{0, 0}, size}, ratio));
}

QImage Backdrop::image(const QSize& size, double ratio, const QRect& part) const {
    QImage image(part.size(), QImage::Format_RGB32);
    RowPainter painter(size, ratio, part, glow_);
    for (int row = 0; row < part.height(); ++row) {
        painter.paint(part.top() + row, reinterpret_cast<QRgb*>(image.scanLine(row)));
    }
    image.setDevicePixelRatio(ratio);
    return image;
}

void Backdrop::paint(QPainter& painter, const QSize& size, const QRect& exposed) {
    const double ratio = painter.device()->devicePixelRatioF();
    const QRect part = pixelsOf(exposed, ratio);
    if (part.isEmpty()) {
        return;
    }
    const QImage first = std::exchange(first_, {});
    const bool isReady = first.size() == part.size() && first.devicePixelRatio() == ratio;
    painter.drawImage(QPointF(part.topLeft()) / ratio, isReady ? first : image(size, ratio, part));
}

}  // namespace tavrel
