#include "tests/bench/FilesOpened.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>

namespace tavrel::bench {

namespace {

/// Whether every thread of the process is being traced.
bool isTraced(pid_t process) {
    const std::filesystem::path folder = "/proc/" + std::to_string(process) + "/task";
    std::filesystem::directory_iterator threads(folder);
    return std::all_of(begin(threads), end(threads), [](const auto& thread) {
        std::ifstream lines(thread.path() / "status");
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("TracerPid:")) {
                return line != "TracerPid:\t0";
            }
        }
        return false;
    });
}

}  // namespace

FilesOpened::FilesOpened(const std::vector<pid_t>& processes) {
    support::ChildProcess::Options options;
    options.command = {"strace",
                       "-f",
                       "-q",
                       "-e",
                       "trace=open,openat,openat2,creat",
                       "-o",
                       (folder_.path() / "opened").string()};
    for (const pid_t each : processes) {
        options.command.insert(options.command.end(), {"-p", std::to_string(each)});
    }
    options.standardError = folder_.path() / "err";
    strace_ = std::make_unique<support::ChildProcess>(options);
    const bool isWatching = support::waitUntil(
        [&] { return std::all_of(processes.begin(), processes.end(), isTraced); });
    if (!isWatching) {
        throw std::runtime_error("strace: " + support::readFile(folder_.path() / "err"));
    }
}

long FilesOpened::count() {
    // It writes down the last ones when it ends.
    strace_->stop();
    long count = 0;
    std::ifstream lines(folder_.path() / "opened");
    for (std::string line; std::getline(lines, line);) {
        count += line.find("open") != std::string::npos || line.find("creat(") != std::string::npos
                     ? 1
                     : 0;
    }
    return count;
}

}  // namespace tavrel::bench
