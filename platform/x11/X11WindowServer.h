#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/layout/LastSeen.h"
#include "platform/layout/LastWord.h"
#include "platform/layout/MonitorDirectory.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/x11/connection/ServerLink.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel {

namespace x11 {

/// What an X server says at one moment.
struct Word {
    /// Null on a server without RandR. The same object as before only while the server shows
    /// what it showed before.
    std::shared_ptr<const Snapshot> snapshot;
};

/// How long an X server may take to show what it is.
inline constexpr std::chrono::milliseconds probeTimeout{3000};

}  // namespace x11

/// Whether the X server draws into a Wayland compositor's windows. It says so by an extension
/// since version 23.1; before, only its outputs were called after it. std::nullopt without a
/// server. Blocks at most for the options' timeout, for each answer.
std::optional<bool> isXwayland(const X11ServerOptions& options = {.timeout = x11::probeTimeout});

/// An X server with RandR 1.3 or later as the window server. A display is an output; it is
/// online when connected and active when a CRTC drives it with a mode. Both lists name
/// every connected output. A moment is one snapshot, read whole only when the server shows signs
/// of a change (`x11::KeptSnapshot`). What it shows is noted: a display that another program
/// switches off after that comes on as it was.
///
/// Thread-safe. Changes are made strictly one at a time, each with the server grabbed;
/// questions have a connection of their own and wait for the server alone. Without a
/// server, or when it goes away, every status is 1006, both lists are absent and every answer is
/// false or 0; it is looked for again when asked, at most once a second. A server without RandR
/// is such a one too, except that it has an online list: an empty one. Only `canSwitch` may be
/// answered by what the server said a moment ago.
///
/// While the server is silent but not known to be gone, a change is 1006 after the options'
/// timeout, and questions are answered by what it said last: that it can't answer says nothing
/// about its displays.
class X11WindowServer : public DisplaySwitch, public DisplayQueries {
public:
    /// Keeps in `store`, which must outlive this, how displays were when switched off, and which
    /// monitor is which display.
    explicit X11WindowServer(UserDefaults& store, const X11ServerOptions& options = {});

    bool canSwitch() override;
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    std::unique_ptr<DisplayMoment> now() override;
    std::unique_ptr<DisplayMoment> lately() override;
    std::unique_ptr<DisplayMoment> nowAfterProbing() override;

private:
    using LastWord = layout::LastWord<x11::Word>;

    /// The last snapshot, in the words common to all window servers.
    struct Described {
        std::shared_ptr<const x11::Snapshot> snapshot;
        layout::KnownMonitors known;
        std::shared_ptr<const layout::Layout> layout;
    };

    std::unique_ptr<DisplayMoment> momentOf(const LastWord::Answer& answer);
    /// Describes each snapshot once, while nobody comes to know its monitors by other numbers.
    std::shared_ptr<const layout::Layout> layoutIn(
        const std::shared_ptr<const x11::Snapshot>& snapshot);

    layout::MonitorDirectory directory_;
    layout::LastSeen lastSeen_;
    LastWord lastWord_;
    std::mutex describedMutex_;
    Described described_;

    std::mutex changeMutex_;
    x11::ServerLink changeLink_;
    layout::RememberedOutputs remembered_;
};

}  // namespace tavrel
