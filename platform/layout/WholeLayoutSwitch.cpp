#include "platform/layout/WholeLayoutSwitch.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "platform/layout/LayoutPolicy.h"
#include "platform/layout/WholeLayout.h"

namespace tavrel::layout {

namespace {

using Outcome = WholeLayoutServer::Outcome;

/// More than a dock that is plugged in brings about.
constexpr int mostTries = 5;
/// Far more than a server refuses that can show anything at all.
constexpr std::size_t mostWays = 64;

/// One switch, from the first look to the last.
class Switch {
public:
    Switch(WholeLayoutServer& server, RememberedOutputs& remembered, LastSeen& lastSeen,
           DisplayID display, bool enabled)
        : server_(server),
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
            Memory after = stored_;
            forget(after, display_);
            store(after);
        } else if (status != serverStatus::success && !isInDoubt_) {
            store(before_);
        }
        return status;
    }

private:
    ServerStatus attempt() {
        ServerStatus failure = serverStatus::cannotComplete;
        std::size_t way = 0;
        for (int tries = 0;;) {
            const WholeLayoutServer::Reading now = server_.read();
            if (!now.layout.has_value()) {
                return now.status;
            }
            isInDoubt_ = false;
            noteSeen(lastSeen_, *now.layout);
            const Output* output = now.layout->output(display_);
            if (output == nullptr || !output->isConnected) {
                return serverStatus::illegalArgument;
            }
            if (output->isActive() == enabled_) {
                return serverStatus::success;
            }
            const std::vector<WholeLayout> ways = plan(*now.layout);
            if (tries == mostTries || way >= std::min(ways.size(), mostWays)) {
                return failure;
            }
            switch (server_.apply(ways[way])) {
                case Outcome::applied:
                    ++tries;
                    break;
                case Outcome::refused:
                    ++way;
                    break;
                case Outcome::outdated:
                    ++tries;
                    way = 0;
                    break;
                case Outcome::lost:
                    ++tries;
                    way = 0;
                    isInDoubt_ = true;
                    failure = serverStatus::notImplemented;
                    break;
                case Outcome::forbidden:
                    return serverStatus::notImplemented;
                case Outcome::silent:
                    isInDoubt_ = true;
                    return serverStatus::notImplemented;
            }
        }
    }

    /// In order of preference. Stores what is to be remembered of a display that goes off.
    std::vector<WholeLayout> plan(const Layout& layout) {
        if (enabled_) {
            return withDisplay(layout, display_, lastSeen_.completed(before_, display_));
        }
        auto without = withoutDisplay(layout, display_, before_);
        if (!without.has_value()) {
            return {};
        }
        Memory memory = before_;
        RememberedOutput was = describeInWhole(layout, display_, before_);
        forget(memory, display_);
        memory.push_back(std::move(was));
        store(memory);
        return {*std::move(without)};
    }

    /// Stores what changes, and nothing else: another process may switch other displays.
    void store(const Memory& memory) {
        if (stored_ != memory) {
            remembered_.update([&](Memory now) { return merged(std::move(now), stored_, memory); });
            stored_ = memory;
        }
    }

    WholeLayoutServer& server_;
    RememberedOutputs& remembered_;
    LastSeen& lastSeen_;
    const DisplayID display_;
    const bool enabled_;
    const Memory before_;
    Memory stored_;
    /// Whether nobody knows how far the server has come: then the way back is kept, if only in
    /// case.
    bool isInDoubt_ = false;
};

}  // namespace

void noteSeen(LastSeen& lastSeen, const Layout& layout) {
    lastSeen.see(layout, [](const Output& /*output*/) { return "{}"; });
}

ServerStatus switchDisplay(WholeLayoutServer& server, RememberedOutputs& remembered,
                           LastSeen& lastSeen, DisplayID display, bool enabled) {
    return Switch(server, remembered, lastSeen, display, enabled).run();
}

}  // namespace tavrel::layout
