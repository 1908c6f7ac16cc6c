#include "platform/LastDisplayGate.h"
#include "platform/macos/MacWindowServer.h"
#include "watchdog/program/WindowServer.h"

namespace tavrel::watchdog {

namespace {

/// What a Mac's window server says of another process's change is promised to be true only once
/// the callback about it has come, and no callback comes here, where no run loop runs. Asking for
/// the list of online displays makes the connection, and brings what is known here up to date.
class FreshSwitch final : public DisplaySwitch {
public:
    FreshSwitch() { windowServer.now()->onlineDisplays(); }

    bool canSwitch() override { return windowServer.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        windowServer.now()->onlineDisplays();
        return gate_.setDisplayEnabled(display, enabled);
    }

    MacWindowServer windowServer;

private:
    /// The application decides the same, but may not have heard yet of what was changed here
    /// a moment ago.
    LastDisplayGate gate_{windowServer, windowServer};
};

}  // namespace

WindowServer makeWindowServer(std::string_view /*name*/) {
    const auto fresh = std::make_shared<FreshSwitch>();
    return {.displaySwitch = fresh,
            .queries = std::shared_ptr<DisplayQueries>(fresh, &fresh->windowServer)};
}

}  // namespace tavrel::watchdog
