#include "platform/plasma/connection/OutputState.h"

#include <limits>

namespace tavrel::plasma {

namespace {

/// Wayland has no largest desktop; sums of two places must still be numbers.
constexpr int largest = std::numeric_limits<int>::max() / 4;

std::vector<DisplayID> inOrder(const std::vector<std::string>& connectors,
                               const layout::Layout& layout) {
    std::vector<DisplayID> order;
    for (const std::string& connector : connectors) {
        for (const layout::Output& output : layout.outputs) {
            if (output.isActive() && output.identity.connector == connector) {
                order.push_back(output.display);
            }
        }
    }
    return order;
}

}  // namespace

std::vector<layout::Identity> identitiesIn(const OutputState& state) {
    std::vector<layout::Identity> identities;
    for (const layout::Output& output : state.outputs) {
        identities.push_back(output.identity);
    }
    return identities;
}

layout::Layout layoutOf(const OutputState& state) {
    layout::Layout layout{.outputs = state.outputs, .maxWidth = largest, .maxHeight = largest};
    layout::numberOutputs(layout, state.known);
    if (state.order.has_value()) {
        const std::vector<DisplayID> order = inOrder(*state.order, layout);
        layout.primary = order.empty() ? 0 : order.front();
    }
    return layout;
}

std::vector<DisplayID> orderOf(const OutputState& state) {
    return state.order.has_value() ? inOrder(*state.order, layoutOf(state))
                                   : std::vector<DisplayID>{};
}

}  // namespace tavrel::plasma
