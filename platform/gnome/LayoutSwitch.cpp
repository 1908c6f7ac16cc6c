#include "platform/gnome/LayoutSwitch.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "platform/layout/LayoutPolicy.h"
#include "platform/layout/WholeLayout.h"

namespace tavrel::gnome {

namespace {

/// How often a layout is made anew because the hardware, or another program, has changed what
/// it was made for.
constexpr int mostTries = 5;

/// One switch, from the first look to the last.
class Switch {
public:
    Switch(DisplayConfig& config, const layout::KnownMonitors& known,
           layout::RememberedOutputs& remembered, layout::LastSeen& lastSeen, DisplayID display,
           bool enabled)
        : config_(config),
          known_(known),
          remembered_(remembered),
          lastSeen_(lastSeen),
          display_(display),
          enabled_(enabled),
          before_(remembered.all()),
          stored_(before_) {}

    ServerStatus run() {
        const ServerStatus status = attempt();
        if (status == serverStatus::success && enabled_) {
            // Also when another program has done it: it is that one's affair from now on.
            layout::Memory after = stored_;
            layout::forget(after, display_);
            store(after);
        } else if (status != serverStatus::success && status != serverStatus::notImplemented) {
            store(before_);
        }
        // Otherwise nobody knows how far the compositor came: the way back is kept, if only in
        // case.
        return status;
    }

private:
    ServerStatus attempt() {
        for (int tries = 0; tries < mostTries; ++tries) {
            if (const Reply reply = look(); reply != Reply::done) {
                return failure(reply);
            }
            const layout::Output* output = layout_.output(display_);
            if (output == nullptr) {
                return serverStatus::illegalArgument;
            }
            if (output->isActive() == enabled_) {
                return serverStatus::success;
            }
            const std::vector<layout::WholeLayout> ways = plan();
            if (ways.empty()) {
                return serverStatus::cannotComplete;
            }
            const Reply reply = applyOneOf(ways);
            if (reply == Reply::done) {
                makeItStay();
            } else if (reply != Reply::denied) {
                return failure(reply);
            } else if (!config_.isAllowed()) {
                return serverStatus::notImplemented;
            }
        }
        return serverStatus::cannotComplete;
    }

    Reply look() {
        DisplayConfig::Reading reading = config_.read();
        if (reading.reply == Reply::done) {
            state_ = *std::move(reading.state);
            state_.known = known_;
            layout_ = layoutOf(state_);
            noteSeen(lastSeen_, state_);
        }
        return reading.reply;
    }

    /// Stores what is to be remembered of a display that goes off.
    std::vector<layout::WholeLayout> plan() {
        if (enabled_) {
            return layout::withDisplay(layout_, display_, lastSeen_.completed(stored_, display_));
        }
        auto without = layout::withoutDisplay(layout_, display_, stored_);
        if (!without.has_value()) {
            return {};
        }
        layout::Memory memory = stored_;
        layout::RememberedOutput was = layout::describeInWhole(layout_, display_, stored_);
        layout::forget(memory, display_);
        memory.push_back(std::move(was));
        store(memory);
        return {*std::move(without)};
    }

    /// The first that is taken decides; a bad mode fails a layout whole.
    Reply applyOneOf(const std::vector<layout::WholeLayout>& ways) {
        Reply reply = Reply::refused;
        for (const layout::WholeLayout& way : ways) {
            const auto configuration = configurationOf(way, state_);
            if (configuration.has_value()) {
                reply = config_.apply(*configuration, DisplayConfig::Method::temporary);
            }
            if (reply != Reply::refused) {
                break;
            }
        }
        return reply;
    }

    /// Applies once more what has come of it, if it is what was wanted: another program may have
    /// changed it meanwhile. The change itself has been made, however this goes.
    void makeItStay() {
        Reply reply = Reply::denied;
        for (int tries = 0; tries < mostTries && reply == Reply::denied; ++tries) {
            if (look() != Reply::done) {
                return;
            }
            const layout::Output* output = layout_.output(display_);
            const auto configuration = configurationOf(state_);
            if (output == nullptr || output->isActive() != enabled_ || !configuration.has_value()) {
                return;
            }
            reply = config_.apply(*configuration, DisplayConfig::Method::temporary);
        }
    }

    /// Stores what changes, and nothing else: another process may switch other displays.
    void store(const layout::Memory& memory) {
        if (stored_ != memory) {
            remembered_.update([&](layout::Memory now) {
                return layout::merged(std::move(now), stored_, memory);
            });
            stored_ = memory;
        }
    }

    static ServerStatus failure(Reply reply) {
        return reply == Reply::refused || reply == Reply::denied ? serverStatus::cannotComplete
                                                                 : serverStatus::notImplemented;
    }

    DisplayConfig& config_;
    const layout::KnownMonitors& known_;
    layout::RememberedOutputs& remembered_;
    layout::LastSeen& lastSeen_;
    const DisplayID display_;
    const bool enabled_;
    const layout::Memory before_;
    layout::Memory stored_;
    MonitorState state_;
    layout::Layout layout_;
};

}  // namespace

void noteSeen(layout::LastSeen& lastSeen, const MonitorState& state) {
    lastSeen.see(layoutOf(state), [](const layout::Output& /*output*/) { return "{}"; });
}

ServerStatus switchDisplay(DisplayConfig& config, const layout::KnownMonitors& known,
                           layout::RememberedOutputs& remembered, layout::LastSeen& lastSeen,
                           DisplayID display, bool enabled) {
    return Switch(config, known, remembered, lastSeen, display, enabled).run();
}

}  // namespace tavrel::gnome
