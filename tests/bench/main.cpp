#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/bench/Measures.h"

/// Measures what the application costs, beside other programs that do the same, and prints it as
/// one table. Ends with 0 when all could be measured, whether or not the goals are met.
namespace tavrel::bench {
namespace {

struct Section {
    std::string_view name;
    void (*measure)(const Extent&, Report&);
};

constexpr Section sections[] = {
    {"start", &measureStart},   {"switching", &measureSwitching}, {"rescue", &measureRescue},
    {"idle", &measureIdle},     {"gnome", &measureGnome},         {"plasma", &measurePlasma},
    {"helper", &measureHelper}, {"parts", &measureParts},
};

struct Wish {
    Extent extent;
    /// All if empty.
    std::vector<std::string_view> names;
};

int usage() {
    std::cerr << "usage: tavrel-bench [--runs NUMBER] [--idle SECONDS] [SECTION…], of";
    for (const Section& each : sections) {
        std::cerr << ' ' << each.name;
    }
    std::cerr << '\n';
    return 2;
}

bool isKnown(std::string_view name) {
    return std::any_of(std::begin(sections), std::end(sections),
                       [&](const Section& each) { return each.name == name; });
}

/// std::nullopt when that is not how to put it.
std::optional<Wish> read(std::span<char*> arguments) {
    Wish wish;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const int number = i + 1 < arguments.size() ? std::atoi(arguments[i + 1]) : 0;
        if (argument == "--runs" && number > 0) {
            wish.extent.runs = number;
            ++i;
        } else if (argument == "--idle" && number > 0) {
            wish.extent.idle = std::chrono::seconds(number);
            ++i;
        } else if (isKnown(argument)) {
            wish.names.push_back(argument);
        } else {
            return std::nullopt;
        }
    }
    return wish;
}

int measure(const Wish& wish) {
    Report report(std::cout);
    for (const Section& section : sections) {
        if (!wish.names.empty() &&
            std::find(wish.names.begin(), wish.names.end(), section.name) == wish.names.end()) {
            continue;
        }
        try {
            section.measure(wish.extent, report);
        } catch (const std::exception& error) {
            report.addFailure(std::string(section.name), error.what());
        }
    }
    std::cout << "\nGoals met: " << report.goalsMet() << ", not met: " << report.goalsMissed()
              << ". Medians of as many runs as the last column says.\n";
    return report.isWhole() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace tavrel::bench

int main(int argc, char** argv) {
    const auto wish = tavrel::bench::read({argv + 1, static_cast<std::size_t>(argc - 1)});
    return wish ? tavrel::bench::measure(*wish) : tavrel::bench::usage();
}
