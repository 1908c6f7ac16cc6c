#pragma once

#include <plasma-outputs-client.h>

#include <cstdint>
#include <vector>

#include "platform/layout/WholeLayout.h"
#include "platform/plasma/connection/Outputs.h"

namespace tavrel::plasma {

/// A whole layout on its way to the server. All positions are set, since the server puts an
/// output that it is told nothing of on top of another.
class Configuration {
public:
    /// `state` is what `outputs` says at the moment. To be used before anything else arrives.
    Configuration(const Outputs& outputs, const OutputState& state);
    ~Configuration();
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;

    /// Returns false when the server has no such display, or no such mode of it; then it is not
    /// to be applied.
    bool fill(const layout::WholeLayout& wanted);

    /// Returns false when the connection has ended, or the server stays silent.
    bool apply(Connection& connection);

    /// Whether the server says that it has been carried out.
    bool isApplied() const { return isApplied_; }

private:
    static const kde_output_configuration_v2_listener listener;

    bool place(const layout::WholeLayout::Place& place);
    void arrange(const std::vector<DisplayID>& order, const std::vector<DisplayID>& off);
    void setPriority(DisplayID display, std::uint32_t priority);
    /// Null when there is none.
    const OutputDevice* find(DisplayID display) const;
    void answer(bool isApplied);

    const std::vector<const OutputDevice*> devices_;
    /// Of the same outputs, in the same order.
    const layout::Layout layout_;
    const std::vector<DisplayID> orderNow_;
    kde_output_configuration_v2* configuration_;
    bool isAnswered_ = false;
    bool isApplied_ = false;
};

}  // namespace tavrel::plasma
