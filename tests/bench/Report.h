#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace tavrel::bench {

/// The middle value, or the mean of the middle two. NaN when there is none.
double median(std::vector<double> values);

/// What a figure is to be at most.
struct Goal {
    enum class Of {
        /// There is no goal.
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
    /// What cannot be measured on this machine, because something is not installed or does not
    /// work. The report is whole without it.
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
