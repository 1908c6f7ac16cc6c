#include "tests/bench/Report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>

namespace tavrel::bench {

namespace {

/// As somebody would write a limit down.
std::string limitText(double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%g", value);
    return text.data();
}

/// With three digits that say something.
std::string figure(double value) {
    if (value == 0) {
        return "0";
    }
    const double size = std::abs(value);
    const int digits = size >= 99.95 ? 0 : size >= 9.995 ? 1 : size >= 0.9995 ? 2 : 3;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", digits, value);
    return text.data();
}

std::string withUnit(double value, const std::string& unit) {
    return figure(value) + (unit.empty() ? "" : " ") + unit;
}

/// Of each run's two values, what `combine` makes of them; of all that, the median.
double medianOfPairs(const Comparison& row, const std::function<double(double, double)>& combine) {
    std::vector<double> combined;
    for (std::size_t run = 0; run < std::min(row.ours.size(), row.theirs.size()); ++run) {
        combined.push_back(combine(row.ours[run], row.theirs[run]));
    }
    return median(std::move(combined));
}

double ratioOf(const Comparison& row) {
    return medianOfPairs(row, std::divides<>());
}

double judged(const Comparison& row) {
    switch (row.goal.of) {
        case Goal::Of::value:
            return median(row.ours);
        case Goal::Of::ratio:
            return ratioOf(row);
        case Goal::Of::excess:
            return medianOfPairs(row, std::minus<>());
        case Goal::Of::nothing:
            break;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

std::string wish(const Comparison& row) {
    const std::string limit = limitText(row.goal.limit);
    const std::string unit = row.unit.empty() ? "" : " " + row.unit;
    switch (row.goal.of) {
        case Goal::Of::value:
            return "≤ " + limit + unit;
        case Goal::Of::ratio:
            return "≤ " + limit + " ×";
        case Goal::Of::excess:
            return "≤ " + limit + unit + " more";
        case Goal::Of::nothing:
            break;
    }
    return "";
}

}  // namespace

double median(std::vector<double> values) {
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

Report::Report(std::ostream& out) : out_(out) {
    out_ << "| what | Tavrel | beside | its figure | ratio | goal | met | runs |\n"
            "|---|---|---|---|---|---|---|---|\n";
}

void Report::add(const Comparison& row) {
    if (row.ours.empty()) {
        addFailure(row.what, "not one run came to an end");
        return;
    }
    std::string verdict;
    if (row.goal.of != Goal::Of::nothing) {
        const bool isMet = judged(row) <= row.goal.limit;
        ++(isMet ? goalsMet_ : goalsMissed_);
        verdict = isMet ? "met" : "**not met**";
    }
    out_ << "| " << row.what << " | " << withUnit(median(row.ours), row.unit) << " | " << row.beside
         << " | " << (row.theirs.empty() ? "" : withUnit(median(row.theirs), row.unit)) << " | "
         << (row.theirs.empty() ? "" : figure(ratioOf(row)) + " ×") << " | " << wish(row) << " | "
         << verdict << " | " << row.ours.size() << " |" << std::endl;
}

void Report::addMissing(const std::string& what, const std::string& why) {
    out_ << "| " << what << " | not measured: " << why << " | | | | | | 0 |" << std::endl;
}

void Report::addFailure(const std::string& what, const std::string& why) {
    ++failures_;
    std::string line = why;
    std::replace(line.begin(), line.end(), '\n', ' ');
    std::replace(line.begin(), line.end(), '|', '/');
    out_ << "| " << what << " | **could not be measured:** " << line << " | | | | | | 0 |"
         << std::endl;
}

}  // namespace tavrel::bench
