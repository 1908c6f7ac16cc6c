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
    /// handed over. After a goodbye that is nothing if all went well. But what the application
    /// hears of a change made here may be behind the truth, and what is known here is not.
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
    /// program, or has never gone off because the server fell silent over it. It is others'
    /// affair from now on, also when they switch it off again. Asked to switch it on, the window
    /// server forgets that it was off.
    void leaveToOthers(DisplayMoment& moment);
    /// The built-in display first, then by number.
    void switchOnIfNothingIsUsable();

    DisplaySwitch& displays_;
    DisplayQueries& queries_;
    MessageChannel& application_;
    Pause pause_;
    SwitchedOff switchedOff_;
    /// What the ending application wants to be on and has not switched on yet. Unlike what is
    /// off because of us, it need not be there: displays of a month are remembered.
    SwitchedOff handedOver_;
    /// What of that was on at the last look.
    std::set<DisplayID> seenOn_;
    /// All that was ever listed: where the window server has no list of what is off, nobody
    /// else here knows of it.
    std::set<DisplayID> seen_;
};

}  // namespace tavrel::watchdog
