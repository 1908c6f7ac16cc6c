#pragma once

#include <chrono>
#include <cstdint>
#include <random>

namespace tavrel {

/// The dice of a fault decorator: the same seed gives the same throws.
class Chance {
public:
    explicit Chance(std::uint64_t seed) : random_(seed) {}

    /// Whether something happens that does so `outOfHundred` times. Draws nothing for 0.
    bool happens(unsigned outOfHundred) {
        return outOfHundred != 0 && random_() % 100 < outOfHundred;
    }

    /// A duration from 0 to `longest`, both included.
    std::chrono::milliseconds upTo(std::chrono::milliseconds longest) {
        return std::chrono::milliseconds(random_() %
                                         static_cast<std::uint64_t>(longest.count() + 1));
    }

private:
    std::mt19937_64 random_;
};

}  // namespace tavrel
