#include "ui/paint/Glow.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace tavrel {
namespace {

constexpr double samplesPerPoint = 1;
/// So many standard deviations beyond the disc's edge less than a thousandth of a colour
/// step is left.
constexpr double reach = 5;
constexpr int slices = 128;

/// The part of a Gaussian centred at 0 that lies between `from` and `to`.
double gaussianBetween(double from, double to, double sigma) {
    const double scale = 1 / (sigma * std::numbers::sqrt2);
    return 0.5 * (std::erf(to * scale) - std::erf(from * scale));
}

/// The Gaussian's weight over the disc when it is centred `distance` away from the disc's
/// centre: the disc is cut into slices along that line's normal, each of them exact.
double blurredDisc(double distance, double radius, double sigma) {
    double sum = 0;
    for (int slice = 0; slice < slices; ++slice) {
        const double from = radius * (2.0 * slice / slices - 1);
        const double to = radius * (2.0 * (slice + 1) / slices - 1);
        const double y = (from + to) / 2;
        const double halfChord = std::sqrt(radius * radius - y * y);
        sum += gaussianBetween(from, to, sigma) *
               gaussianBetween(-halfChord - distance, halfChord - distance, sigma);
    }
    return sum;
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

}  // namespace tavrel
