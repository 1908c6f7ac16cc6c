#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tavrel::bench {

/// Parts of the application that are measured alone, by Google Benchmark: in random turns, each
/// several times, by the processor time they take. To be made once in a process.
class Benchmarks {
public:
    /// Each is measured `runs` times.
    explicit Benchmarks(int runs) : runs_(runs) {}

    /// Adds `action`, which does something with `size` of whatever it works on.
    void add(const std::string& name, long size, std::function<void()> action) const;

    /// Blocks until all that were added have been measured.
    void run();

    /// Of one action, a figure for each run.
    const std::vector<double>& nanoseconds(const std::string& name, long size) const {
        return nanoseconds_.at({name, size});
    }
    /// The same for each of the things it works on.
    std::vector<double> nanosecondsEach(const std::string& name, long size) const;

private:
    class Collector;

    const int runs_;
    std::map<std::pair<std::string, long>, std::vector<double>> nanoseconds_;
};

}  // namespace tavrel::bench
