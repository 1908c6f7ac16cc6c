#pragma once

#include <chrono>
#include <set>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "watchdog/protocol/MessageChannel.h"
#include "watchdog/protocol/SwitchedOff.h"

namespace tavrel::watchdog {

/// The watchdog's side of the conversation: switches displays for the application, one at a
/// time, switches on what is off when the application has ended, and steps in while it is there
/// and does nothing.
class WatchdogService {
public:
    /// The application says about once a second that it is running. After this much silence
    /// it counts as hung.
    static constexpr std::chrono::seconds silenceLimit{5};
    /// How often this looks after the displays in the place of a hung application.
    static constexpr std::chrono::seconds lookInterval{1};

    /// All must outlive it.
    WatchdogService(DisplaySwitch& displays, DisplayQueries& queries, MessageChannel& application,
                    Pause pause);

    /// Looks at the displays, says that it is ready, and looks again at each heartbeat. Serves
    /// the application until its end, then switches on what it left off, and what it has
    /// handed over. After a goodbye nothing is left to switch on if all went well; it is checked
    /// all the same, because the application may not have heard yet of a change made here.
    ///
    /// While the application is silent for longer than `silenceLimit`, everything connected is
    /// switched on whenever no display is usable. As long as one is, nothing is done, so that
    /// it does no harm if the application was only held up: by a debugger, or because the
    /// whole machine was asleep.
    ///
    /// What is not a message ends the conversation, but displays are not switched on before
    /// the application is gone: it may be running and start another watchdog.
    void run();

private:
    /// Returns at the application's goodbye or when it is gone.
    void converse();
    void switchOnWhatIsLeft();
    /// The next message, or why there will be none.
    Received awaitMessage();
    /// Does what the message asks for; false when an application may not send such a one.
    bool handle(const Message& message);
    ServerStatus carryOut(DisplayID display, bool enabled);
    /// To be called often, since a window server brings what another program switches off back
    /// as it was when last looked at.
    void look();
    /// What was switched off here and is on at two looks in a row was switched on by another
    /// program, or never went off because the server fell silent meanwhile. From now on this
    /// leaves it alone, also when others switch it off again. It is switched on once more, so that
    /// the window server forgets that it was off.
    void leaveToOthers(DisplayMoment& moment);
    /// The built-in display first, then by number.
    void switchOnIfNothingIsUsable();

    DisplaySwitch& displays_;
    DisplayQueries& queries_;
    MessageChannel& application_;
    Pause pause_;
    SwitchedOff switchedOff_;
    /// What the ending application wants to be on and has not switched on yet. Unlike
    /// `switchedOff_` it may name displays that are not connected: the application remembers
    /// them for a month.
    SwitchedOff handedOver_;
    /// What of that was on at the last look.
    std::set<DisplayID> seenOn_;
    /// All that was ever listed: where the window server has no list of what is off, nobody
    /// else here knows of it.
    std::set<DisplayID> seen_;
};

}  // namespace tavrel::watchdog
