#pragma once

#include <mutex>
#include <optional>

#include "platform/DisplayLifecycle.h"
#include "platform/DisplayQueries.h"
#include "platform/x11/RememberedOutputs.h"
#include "platform/x11/ServerLink.h"
#include "platform/x11/ServerOptions.h"
#include "platform/x11/Snapshot.h"

namespace tavrel {

/// An X server with RandR 1.2 or later as the window server. A display is an output; it is
/// online when connected and active when a CRTC drives it with a mode. Both lists name
/// every connected output.
///
/// Thread-safe. Changes are made strictly one at a time, each with the server grabbed;
/// questions have a connection of their own and wait for the server alone. Without a
/// server, or when it goes away or falls silent, every status is 1006 and every answer
/// false or 0; it is looked for again when asked, at most once a second. A server without
/// RandR is such a one too, except that it has an online list: an empty one.
class X11WindowServer : public DisplayLifecycle, public DisplayQueries {
public:
    /// Keeps in `store`, which must outlive this, how displays were when switched off.
    explicit X11WindowServer(UserDefaults& store, const X11ServerOptions& options = {});

    bool canControlDisplays() override;
    ServerStatus getDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                std::uint32_t* count) override;
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    ServerStatus getOnlineDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                      std::uint32_t* count) override;
    bool isBuiltIn(DisplayID display) override;
    bool isOnline(DisplayID display) override;
    bool isActive(DisplayID display) override;
    std::uint32_t vendorNumber(DisplayID display) override;
    std::uint32_t modelNumber(DisplayID display) override;
    std::uint32_t serialNumber(DisplayID display) override;

private:
    static x11::Connection* usableConnection(x11::ServerLink& link);
    std::optional<x11::Snapshot> ask();
    bool isWithoutRandr();
    std::optional<x11::Output> find(DisplayID display);

    std::mutex questionMutex_;
    x11::ServerLink questionLink_;

    std::mutex changeMutex_;
    x11::ServerLink changeLink_;
    x11::RememberedOutputs remembered_;
};

}  // namespace tavrel
