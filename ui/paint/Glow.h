#pragma once

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

}  // namespace tavrel
