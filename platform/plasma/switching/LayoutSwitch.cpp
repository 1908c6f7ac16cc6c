#include "platform/plasma/switching/LayoutSwitch.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "platform/layout/LayoutPolicy.h"
#include "platform/layout/WholeLayout.h"

namespace tavrel::plasma {

namespace {

struct Decision {
    /// When not success, the switch is refused and nothing is to be changed.
    ServerStatus status = serverStatus::success;
    /// In order of preference; empty when the display is as it should be already.
    std::vector<layout::WholeLayout> plans = {};
    /// What is to be remembered once a plan has been carried out.
    layout::Memory memory = {};
};

Decision decideOff(const layout::Layout& layout, DisplayID display, Decision decision) {
    auto plan = layout::withoutDisplay(layout, display, decision.memory);
    if (!plan.has_value()) {
        decision.status = serverStatus::cannotComplete;
        return decision;
    }
    auto was = layout::describeInWhole(layout, display, decision.memory);
    layout::forget(decision.memory, display);
    decision.memory.push_back(std::move(was));
    decision.plans.push_back(*std::move(plan));
    return decision;
}

Decision decideOn(const layout::Layout& layout, DisplayID display, const layout::LastSeen& lastSeen,
                  Decision decision) {
    decision.plans =
        layout::withDisplay(layout, display, lastSeen.completed(decision.memory, display));
    if (decision.plans.empty()) {
        decision.status = serverStatus::cannotComplete;
        return decision;
    }
    layout::forget(decision.memory, display);
    return decision;
}

Decision decide(const layout::Layout& layout, DisplayID display, bool enabled,
                const layout::Memory& memory, const layout::LastSeen& lastSeen) {
    Decision unchanged{.memory = memory};
    const layout::Output* output = layout.output(display);
    if (output == nullptr || !output->isConnected) {
        unchanged.status = serverStatus::illegalArgument;
        return unchanged;
    }
    if (output->isActive() == enabled) {
        return unchanged;
    }
    return enabled ? decideOn(layout, display, lastSeen, std::move(unchanged))
                   : decideOff(layout, display, std::move(unchanged));
}

/// What has come on must be what was asked for; where it stands, the server has confirmed.
bool isCarriedOut(const layout::Layout& now, const layout::WholeLayout& plan, DisplayID display) {
    return std::all_of(plan.places.begin(), plan.places.end(), [&](const auto& place) {
        const layout::Output* output = now.output(place.display);
        if (output == nullptr || output->isActive() != place.shown.has_value()) {
            return false;
        }
        return place.display != display || !place.shown.has_value() ||
               (output->shown->mode == place.shown->mode &&
                output->shown->rotation == place.shown->rotation);
    });
}

layout::WholeLayout asItIs(const layout::Layout& layout) {
    layout::WholeLayout whole{.primary = layout.primary.value_or(0)};
    for (const layout::Output& output : layout.outputs) {
        whole.places.push_back({output.display, output.shown});
    }
    return whole;
}

class Switching {
public:
    Switching(LayoutServer& server, layout::RememberedOutputs& remembered,
              layout::LastSeen& lastSeen, DisplayID display, bool enabled)
        : server_(server),
          remembered_(remembered),
          lastSeen_(lastSeen),
          display_(display),
          enabled_(enabled),
          before_(remembered.all()),
          noted_(before_) {}

    ServerStatus run() {
        // More than a dock that is plugged in brings about.
        constexpr int mostLosses = 5;
        for (int losses = 0; losses < mostLosses;) {
            const std::optional<layout::Layout> layout = server_.read();
            if (!layout.has_value()) {
                return serverStatus::notImplemented;
            }
            noteSeen(lastSeen_, *layout);
            const Decision decision = decide(*layout, display_, enabled_, before_, lastSeen_);
            if (decision.status != serverStatus::success) {
                return refuse(decision.status);
            }
            if (decision.plans.empty()) {
                return arrived();
            }
            // Far more than a server refuses that can show anything at all.
            constexpr std::size_t most = 64;
            if (number_ >= std::min(decision.plans.size(), most)) {
                return refuse(serverStatus::cannotComplete);
            }
            if (!enabled_) {
                note(decision.memory);
            }
            switch (attempt(*layout, decision)) {
                case LayoutServer::Outcome::applied:
                    return serverStatus::success;
                case LayoutServer::Outcome::refused:
                    ++number_;
                    break;
                case LayoutServer::Outcome::lost:
                    ++losses;
                    break;
                case LayoutServer::Outcome::silent:
                    return serverStatus::notImplemented;
            }
        }
        return serverStatus::notImplemented;
    }

private:
    LayoutServer::Outcome attempt(const layout::Layout& before, const Decision& decision) {
        const layout::WholeLayout& plan = decision.plans[number_];
        const LayoutServer::Outcome outcome = server_.apply(plan);
        if (outcome != LayoutServer::Outcome::applied) {
            return outcome;
        }
        const std::optional<layout::Layout> now = server_.read();
        if (!now.has_value()) {
            return LayoutServer::Outcome::lost;
        }
        if (isCarriedOut(*now, plan, display_)) {
            noteSeen(lastSeen_, *now);
            note(decision.memory);
            return LayoutServer::Outcome::applied;
        }
        return server_.apply(asItIs(before)) == LayoutServer::Outcome::silent
                   ? LayoutServer::Outcome::silent
                   : LayoutServer::Outcome::refused;
    }

    /// It is as it should be: by an attempt whose end nobody heard of, or from the beginning. Then
    /// another program has done it, and it is that one's affair from now on.
    ServerStatus arrived() {
        if (enabled_) {
            layout::Memory memory = before_;
            layout::forget(memory, display_);
            note(memory);
        }
        return serverStatus::success;
    }

    ServerStatus refuse(ServerStatus status) {
        note(before_);
        return status;
    }

    /// Stores what is new in `memory`, and nothing else: another process may switch other
    /// displays.
    void note(const layout::Memory& memory) {
        if (memory != noted_) {
            remembered_.update(
                [&](layout::Memory now) { return layout::merged(std::move(now), noted_, memory); });
            noted_ = memory;
        }
    }

    LayoutServer& server_;
    layout::RememberedOutputs& remembered_;
    layout::LastSeen& lastSeen_;
    const DisplayID display_;
    const bool enabled_;
    const layout::Memory before_;
    /// What is stored of it.
    layout::Memory noted_;
    /// Of the plans, the one whose turn it is.
    std::size_t number_ = 0;
};

}  // namespace

void noteSeen(layout::LastSeen& lastSeen, const layout::Layout& layout) {
    lastSeen.see(layout, [](const layout::Output&) { return "{}"; });
}

ServerStatus switchDisplay(LayoutServer& server, layout::RememberedOutputs& remembered,
                           layout::LastSeen& lastSeen, DisplayID display, bool enabled) {
    return Switching(server, remembered, lastSeen, display, enabled).run();
}

}  // namespace tavrel::plasma
