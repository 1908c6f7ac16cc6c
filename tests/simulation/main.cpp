// Simulates the core for many hours and prints how much it did. Prints a failure with its
// seed, the shortest list of events found that leads to it, and the last lines of its log.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/simulation/OneProcessor.h"
#include "tests/simulation/Run.h"
#include "tests/simulation/exhaustive/Report.h"

namespace {

using namespace tavrel::simulation;

struct Options {
    std::uint64_t firstSeed = 1;
    double hours = 1000;
    double hoursPerSeed = 24;
    unsigned jobs = 2;
    std::uint64_t repeatEvery = 1;
    bool expectViolation = false;
    std::optional<std::size_t> allOrdersOf;
};

[[noreturn]] void usage() {
    std::fputs(
        "usage: tavrel-simulate [--seed N | --fresh] [--hours H] [--hours-per-seed H]\n"
        "                       [--jobs N] [--repeat-every N] [--expect-violation]\n"
        "       tavrel-simulate --all-orders-of EVENTS [--expect-violation]\n"
        "  --seed N            replay this seed alone; with --hours, seeds N, N+1, …\n"
        "  --fresh             start at a seed nobody has chosen\n"
        "  --hours H           how long to simulate in all\n"
        "  --repeat-every N    run each Nth seed twice and compare the logs; 1 is all of them\n"
        "  --all-orders-of N   instead of random worlds, small ones: all orders of up to N events\n"
        "  --expect-violation  succeed when something is found, fail when not\n",
        stderr);
    std::exit(2);
}

Options parse(int argc, char** argv) {
    Options options;
    bool hoursGiven = false;
    bool seedGiven = false;
    for (int index = 1; index < argc; ++index) {
        const std::string option = argv[index];
        const auto value = [&]() -> const char* {
            return index + 1 < argc ? argv[++index] : (usage(), nullptr);
        };
        const auto number = [&] {
            const char* text = value();
            char* end = nullptr;
            const double parsed = std::strtod(text, &end);
            if (*text == '\0' || *end != '\0' || parsed < 0) {
                usage();
            }
            return parsed;
        };
        if (option == "--seed") {
            options.firstSeed = static_cast<std::uint64_t>(number());
            seedGiven = true;
        } else if (option == "--fresh") {
            options.firstSeed = std::random_device{}();
        } else if (option == "--hours") {
            options.hours = number();
            hoursGiven = true;
        } else if (option == "--hours-per-seed") {
            options.hoursPerSeed = number();
        } else if (option == "--jobs") {
            options.jobs = static_cast<unsigned>(number());
        } else if (option == "--repeat-every") {
            options.repeatEvery = std::max<std::uint64_t>(1, static_cast<std::uint64_t>(number()));
        } else if (option == "--all-orders-of") {
            options.allOrdersOf = static_cast<std::size_t>(number());
        } else if (option == "--expect-violation") {
            options.expectViolation = true;
        } else {
            usage();
        }
    }
    if (seedGiven && !hoursGiven) {
        options.hours = options.hoursPerSeed;
    }
    return options;
}

struct Totals {
    std::mutex mutex;
    std::atomic<std::uint64_t> nextSeed{0};
    std::atomic<bool> stop{false};
    double hours = 0;
    std::uint64_t steps = 0;
    std::uint64_t events = 0;
    std::uint64_t seeds = 0;
    std::uint64_t repeated = 0;
    std::uint64_t hash = 0;
    bool violated = false;
};

void report(std::uint64_t seed, const std::vector<Event>& events, const Outcome& outcome,
            const Options& options) {
    std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed),
                outcome.violation->c_str());
    const auto shrunk =
        shrink(seed, {events.begin(), events.begin() + static_cast<std::ptrdiff_t>(outcome.events)},
               *outcome.violation, options.expectViolation ? 10 : 400);
    std::printf("  %zu of %zu events are enough:\n", shrunk.size(), outcome.events);
    for (const Event& event : shrunk) {
        std::printf("    %s\n", describe(event).c_str());
    }
    std::printf("  what happened with them, at the end:\n");
    for (const std::string& line : run(seed, shrunk).tail) {
        std::printf("    %s\n", line.c_str());
    }
    std::printf("  replay: scripts/simulate --seed %llu --hours-per-seed %g\n",
                static_cast<unsigned long long>(seed), options.hoursPerSeed);
}

void work(const Options& options, std::uint64_t seedCount, Totals& totals) {
    while (!totals.stop) {
        const std::uint64_t index = totals.nextSeed++;
        if (index >= seedCount) {
            return;
        }
        const std::uint64_t seed = options.firstSeed + index;
        const auto events = generateEvents(seed, options.hoursPerSeed);
        const Outcome outcome = run(seed, events);
        const bool compare = index % options.repeatEvery == 0 && !outcome.violation.has_value();
        const bool repeats = !compare || run(seed, events).hash == outcome.hash;

        const std::lock_guard lock(totals.mutex);
        totals.hours += outcome.hours;
        totals.steps += outcome.steps;
        totals.events += outcome.events;
        totals.hash ^= outcome.hash;
        ++totals.seeds;
        totals.repeated += compare ? 1 : 0;
        if (outcome.violation.has_value() && !totals.violated) {
            report(seed, events, outcome, options);
        } else if (!repeats) {
            std::printf("seed %llu: a second run gave another log\n",
                        static_cast<unsigned long long>(seed));
        }
        if (outcome.violation.has_value() || !repeats) {
            totals.violated = true;
            totals.stop = true;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const Options options = parse(argc, argv);
    if (options.allOrdersOf.has_value()) {
        return exploreAndReport(*options.allOrdersOf) == options.expectViolation ? EXIT_SUCCESS
                                                                                 : EXIT_FAILURE;
    }
    const auto seedCount =
        static_cast<std::uint64_t>(std::max(1.0, options.hours / options.hoursPerSeed + 0.5));
    Totals totals;
    const auto start = std::chrono::steady_clock::now();
    // Before anything else, so that also a crash can be replayed.
    std::printf(
        "seeds %llu to %llu, %g hours each\n", static_cast<unsigned long long>(options.firstSeed),
        static_cast<unsigned long long>(options.firstSeed + seedCount - 1), options.hoursPerSeed);
    std::fflush(stdout);
    std::vector<std::thread> threads;
    for (unsigned job = 0; job < std::max(1U, options.jobs); ++job) {
        threads.emplace_back([&, job] {
            stayOnOneProcessor(job);
            work(options, seedCount, totals);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    std::printf(
        "%.0f simulated hours in %.1f s (%.0f simulated hours a second); %llu seeds, "
        "%llu of them run a second time and compared; %llu events, %llu steps; hash %016llx\n",
        totals.hours, spent.count(), totals.hours / spent.count(),
        static_cast<unsigned long long>(totals.seeds),
        static_cast<unsigned long long>(totals.repeated),
        static_cast<unsigned long long>(totals.events),
        static_cast<unsigned long long>(totals.steps),
        static_cast<unsigned long long>(totals.hash));
    return totals.violated == options.expectViolation ? EXIT_SUCCESS : EXIT_FAILURE;
}
