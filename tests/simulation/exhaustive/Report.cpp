#include "tests/simulation/exhaustive/Report.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/simulation/OneProcessor.h"
#include "tests/simulation/exhaustive/Exploration.h"

namespace tavrel::simulation {

namespace {

void print(const SmallWorld& world, const Exploration& exploration, double seconds) {
    std::printf(
        "%s\n  %zu states in %llu runs and %.1f s; by their fewest events:", world.name.c_str(),
        exploration.states(), static_cast<unsigned long long>(exploration.runs()), seconds);
    for (const std::size_t count : exploration.newStates()) {
        std::printf(" %zu", count);
    }
    std::printf("\n");
}

void print(const Exploration::Violation& violation) {
    std::printf("  VIOLATION: %s\n  after:\n", violation.what.c_str());
    for (const Event& event : violation.events) {
        std::printf("    %s\n", describe(event).c_str());
    }
    std::printf("  what happened, at the end:\n");
    for (const std::string& line : violation.tail) {
        std::printf("    %s\n", line.c_str());
    }
}

}  // namespace

bool exploreAndReport(std::size_t events) {
    std::printf("all orders of up to %zu events\n", events);
    std::mutex mutex;
    std::atomic<bool> isViolated = false;
    std::vector<std::thread> threads;
    for (const SmallWorld& world : smallWorlds()) {
        threads.emplace_back([&, world, job = static_cast<unsigned>(threads.size())] {
            stayOnOneProcessor(job);
            const auto start = std::chrono::steady_clock::now();
            Exploration exploration(world, isViolated);
            const auto violation = exploration.run(world.onlyHalf ? (events + 1) / 2 : events);
            const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;

            const std::lock_guard lock(mutex);
            print(world, exploration, spent.count());
            if (violation.has_value()) {
                isViolated = true;
                print(*violation);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return isViolated;
}

}  // namespace tavrel::simulation
