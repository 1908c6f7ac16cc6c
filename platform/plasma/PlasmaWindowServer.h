#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/layout/LastSeen.h"
#include "platform/layout/LastWord.h"
#include "platform/layout/MonitorDirectory.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/plasma/connection/ServerLink.h"

namespace tavrel {

/// Whether the Wayland server of that name lets its outputs be configured as Plasma's does.
/// Blocks for two seconds at most; then the server is silent, and what the session calls itself
/// (XDG_CURRENT_DESKTOP) decides: what hangs is not another.
bool isPlasmaOffered(const std::optional<std::string>& displayName = std::nullopt);

/// Plasma's compositor as the window server. A display is an output device; it is online as
/// long as the server describes it, and active when it is enabled. Both lists name every one.
/// A moment is what the server has said at one time. What it shows is noted: a display that
/// another program switches off after that comes on as it was.
///
/// Thread-safe. Changes are made one at a time; questions have a connection of their own. A
/// display that was switched off may be off after the server's next start as well, if that
/// has kept it on the disk. Without a server, or when it goes away, every status is 1006, both
/// lists are absent and every answer is false or 0; it is looked for again when asked.
///
/// While the server is silent but not known to be gone, a change is 1006 after the options'
/// timeout, and questions are answered by what it said last.
class PlasmaWindowServer final : public DisplaySwitch, public DisplayQueries {
public:
    /// Keeps in `store`, which must outlive this, how displays were when switched off, and which
    /// monitor is which display.
    explicit PlasmaWindowServer(UserDefaults& store, const PlasmaServerOptions& options = {});

    bool canSwitch() override;
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    std::unique_ptr<DisplayMoment> now() override;
    std::unique_ptr<DisplayMoment> lately() override;
    /// The server notices by itself what is plugged in.
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return now(); }

private:
    using LastWord = layout::LastWord<plasma::OutputState>;

    std::unique_ptr<DisplayMoment> momentOf(const LastWord::Answer& answer);

    layout::MonitorDirectory directory_;
    layout::LastSeen lastSeen_;
    LastWord lastWord_;

    std::mutex changeMutex_;
    plasma::ServerLink changeLink_;
    layout::RememberedOutputs remembered_;
};

}  // namespace tavrel
