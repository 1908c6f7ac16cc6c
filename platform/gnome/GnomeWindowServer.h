#pragma once

#include <chrono>
#include <memory>
#include <mutex>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/gnome/BusDisplayConfig.h"
#include "platform/layout/LastSeen.h"
#include "platform/layout/LastWord.h"
#include "platform/layout/MonitorDirectory.h"
#include "platform/layout/RememberedOutputs.h"

namespace tavrel {

namespace gnome {

/// How long a compositor may take to show what it is.
inline constexpr std::chrono::milliseconds probeTimeout{3000};

/// Whether it does what GNOME's does: other compositors are on the bus under its name, and tell
/// of monitors, but do not take layouts. So it is asked what it would say to the one it has.
/// One that is there and says nothing counts as GNOME's: what hangs is not another.
bool answersLikeGnome(DisplayConfig& config);

/// The same of the one on the session's bus.
bool answersLikeGnome(const GnomeOptions& options = {.timeout = probeTimeout});

}  // namespace gnome

/// The compositor of a GNOME session as the window server. A display is a monitor; all that are
/// listed are online, and those in the layout active. A moment is one answer. What it shows is
/// noted: a display that another program switches off after that comes on as it was.
///
/// Thread-safe. Changes are made one at a time; questions have a connection of their own and
/// wait for the compositor alone. Without one, every status is 1006, both lists are absent and
/// every answer is false or 0; it is looked for again when asked. Where an administrator has
/// forbidden changes, these are 1006 too.
///
/// While it is silent, a change is 1006 after the options' timeout, and questions are answered
/// by what it said last: that it can't answer says nothing about its displays. It looks for
/// monitors by itself, and is never made to.
class GnomeWindowServer final : public DisplaySwitch, public DisplayQueries {
public:
    /// Keeps in `store`, which must outlive this, how displays were when switched off, and which
    /// monitor is which display.
    explicit GnomeWindowServer(UserDefaults& store, const GnomeOptions& options = {});

    bool canSwitch() override;
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    std::unique_ptr<DisplayMoment> now() override;
    std::unique_ptr<DisplayMoment> lately() override;
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return now(); }

private:
    using LastWord = layout::LastWord<gnome::MonitorState>;

    std::unique_ptr<DisplayMoment> momentOf(const LastWord::Answer& answer);

    layout::MonitorDirectory directory_;
    layout::LastSeen lastSeen_;
    LastWord lastWord_;

    std::mutex changeMutex_;
    gnome::BusDisplayConfig changeConfig_;
    layout::RememberedOutputs remembered_;
};

}  // namespace tavrel
