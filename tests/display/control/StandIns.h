#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A Mac's loader, transactions and entry points for a process that has none, recording
/// how they are used. `dlopen` is the real one for all paths but the framework's.
namespace tavrel::standIns {

struct Opening {
    std::string path;
    int mode;
    friend bool operator==(const Opening&, const Opening&) = default;
};

struct State {
    /// The library that opening the framework gives; with an empty path it cannot be opened.
    std::string frameworkFile;
    std::vector<Opening> openings;

    /// Every other call, as it would be written. "transaction" is the one begun last.
    std::vector<std::string> calls;

    std::int32_t beginStatus = 0;
    std::int32_t configureStatus = 0;
    std::int32_t cancelStatus = 0;
    std::int32_t completeStatus = 0;
    std::int32_t listStatus = 0;
    /// What listing gives.
    std::vector<std::uint32_t> displays;
};

/// The process's own; outlives everything.
State& state();

const Opening frameworkOpening{"/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight", 5};

}  // namespace tavrel::standIns
