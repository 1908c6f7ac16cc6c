#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A Mac's loader, entry points and transactions, for a process that has none. They do what
/// the state says and record how they are used.
namespace tavrel::standIns {

using Names = std::vector<std::string>;

/// Where there are which entry points.
struct Offer {
    Names process = {};
    /// std::nullopt when the framework cannot be opened.
    std::optional<Names> framework = {};
};

struct State {
    Offer offer;

    /// The path and the mode of each opening.
    std::vector<std::string> openings;
    /// Every other call but the look-ups, as it would be written, that of an entry point
    /// after the place it was found in. "transaction" is the one begun last.
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

}  // namespace tavrel::standIns
