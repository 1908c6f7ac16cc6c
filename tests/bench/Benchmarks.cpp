#include "tests/bench/Benchmarks.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace tavrel::bench {

/// Keeps every figure, prints nothing.
class Benchmarks::Collector : public benchmark::BenchmarkReporter {
public:
    explicit Collector(Benchmarks& benchmarks) : benchmarks_(benchmarks) {}

    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                benchmarks_.nanoseconds_[{run.run_name.function_name, std::stol(run.run_name.args)}]
                    .push_back(run.GetAdjustedCPUTime());
            }
        }
    }

private:
    Benchmarks& benchmarks_;
};

void Benchmarks::add(const std::string& name, long size, std::function<void()> action) const {
    constexpr double secondsOfARun = 0.05;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [act = std::move(action)](benchmark::State& state) {
                                     while (state.KeepRunning()) {
                                         act();
                                     }
                                 })
        ->Arg(size)
        ->Unit(benchmark::kNanosecond)
        ->MinTime(secondsOfARun)
        ->Repetitions(runs_);
}

void Benchmarks::run() {
    std::string program = "tavrel-bench";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::array<char*, 3> arguments{program.data(), interleaving.data(), nullptr};
    int count = 2;
    benchmark::Initialize(&count, arguments.data());
    Collector collector(*this);
    benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::ClearRegisteredBenchmarks();
}

std::vector<double> Benchmarks::nanosecondsEach(const std::string& name, long size) const {
    const std::vector<double>& whole = nanoseconds(name, size);
    std::vector<double> each;
    std::transform(whole.begin(), whole.end(), std::back_inserter(each),
                   [&](double duration) { return duration / static_cast<double>(size); });
    return each;
}

}  // namespace tavrel::bench
