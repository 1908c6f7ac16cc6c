#pragma once

#include <cstddef>
#include <vector>

#include "tests/simulated/Chooser.h"

namespace tavrel::simulation {

/// Goes through all sequences of choices, depth first: each run repeats the choices of the run
/// before up to the last one that has an alternative, takes that, and then always the first.
class Choices : public Chooser {
public:
    std::size_t choose(std::size_t count) override {
        if (position_ == path_.size()) {
            path_.push_back({0, count});
        }
        return path_[position_++].taken;
    }

    /// Whether the next choice was made by an earlier run.
    bool isRepeating() const { return position_ < path_.size(); }

    /// How many choices this run has made.
    std::size_t position() const { return position_; }

    /// Choice number `index` of this run.
    std::size_t taken(std::size_t index) const { return path_[index].taken; }

    /// Begins the next run; false when there is none.
    bool next() {
        position_ = 0;
        while (!path_.empty() && path_.back().taken + 1 == path_.back().count) {
            path_.pop_back();
        }
        if (path_.empty()) {
            return false;
        }
        ++path_.back().taken;
        return true;
    }

private:
    struct Choice {
        std::size_t taken;
        std::size_t count;
    };

    std::vector<Choice> path_;
    std::size_t position_ = 0;
};

}  // namespace tavrel::simulation
