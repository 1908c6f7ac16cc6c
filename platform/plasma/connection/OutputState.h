#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/Layout.h"

namespace tavrel::plasma {

/// What a Plasma server has said of its outputs until one moment. Plain data.
struct OutputState {
    /// Without the numbers of their displays.
    std::vector<layout::Output> outputs = {};
    /// The connectors of what is on, the primary one first; std::nullopt where the server says
    /// nothing of an order.
    std::optional<std::vector<std::string>> order = {};
    /// Not the server's: the monitors met before, by which each is told.
    layout::KnownMonitors known = {};
};

/// Who is connected where, in the state's order.
std::vector<layout::Identity> identitiesIn(const OutputState& state);

/// `state` in the words common to all window servers, in its order.
layout::Layout layoutOf(const OutputState& state);

/// The displays that are on, in the order in which the server gives them its panels, the primary
/// one first. Empty where it says nothing of an order.
std::vector<DisplayID> orderOf(const OutputState& state);

}  // namespace tavrel::plasma
