#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace tavrel::bench {

/// The middle one of what was measured, of two the mean. NaN of nothing.
double median(std::vector<double> values);

/// What a figure is to be at most; infinite where there is no such wish.
struct Goal {
    enum class Of {
        nothing,
        value,
        /// How many times the other's it is.
        ratio,
        /// How much more than the other's it is.
        excess,
    };
    Of of = Of::nothing;
    double limit = 0;
};

/// One row: a figure of ours, and beside it the same of somebody else, where there is one.
struct Comparison {
    std::string what;
    std::string unit = {};
    /// One for each run.
    std::vector<double> ours = {};
    /// Who else.
    std::string beside = {};
    /// In the same runs; empty where there is nobody else.
    std::vector<double> theirs = {};
    Goal goal = {};
};

/// Writes the table, row by row, as Markdown.
class Report {
public:
    /// `out` must outlive it.
    explicit Report(std::ostream& out);

    /// Medians, and the median of the runs' ratios.
    void add(const Comparison& row);
    /// Whom to compare with is not on this machine: `whose` values are missing, and why.
    void addMissing(const std::string& what, const std::string& why);
    /// What should have been measured and could not be.
    void addFailure(const std::string& what, const std::string& why);

    bool isWhole() const { return failures_ == 0; }
    int goalsMissed() const { return goalsMissed_; }
    int goalsMet() const { return goalsMet_; }

private:
    std::ostream& out_;
    int failures_ = 0;
    int goalsMissed_ = 0;
    int goalsMet_ = 0;
};

}  // namespace tavrel::bench
