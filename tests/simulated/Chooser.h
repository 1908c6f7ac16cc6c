#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace tavrel {

/// Decides what could go either way in a simulated world.
class Chooser {
public:
    virtual ~Chooser() = default;

    /// A number below `count`, which is at least 2.
    virtual std::size_t choose(std::size_t count) = 0;
};

/// Throws dice: the same seed gives the same throws.
class SeededChooser : public Chooser {
public:
    explicit SeededChooser(std::uint64_t seed) : random_(seed) {}

    std::size_t choose(std::size_t count) override {
        return static_cast<std::size_t>(random_() % count);
    }

private:
    std::mt19937_64 random_;
};

}  // namespace tavrel
