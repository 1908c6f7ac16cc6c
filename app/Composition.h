#pragma once

#include <memory>

#include "app/QuitSequence.h"
#include "platform/HotKeys.h"
#include "platform/Platform.h"
#include "platform/SwitchOffGate.h"
#include "platform/TrayHost.h"

namespace tavrel {

/// The application's platform, put together: what differs by `System`, what is the same on
/// all of them, and the decorators around both.
///
/// Make it on the main thread once the toolkit's application object exists, and destroy it
/// there before that is gone. Must outlive everything that uses its `platform()`.
class Composition {
public:
    Composition();
    /// Blocks until background jobs have ended, then drops what is still queued.
    ~Composition();

    Composition(const Composition&) = delete;
    Composition& operator=(const Composition&) = delete;

    /// Whether the application ends with its window; see `System`.
    bool quitOnLastWindowClosed() const;

    Platform platform();
    HotKeys& hotKeys();
    SwitchOffGate& switchOffGate();
    /// The tray of this desktop, or null; see `System`. Must be gone before this object is.
    std::unique_ptr<TrayHost> makeTrayHost();

    /// Runs `unwritable` on the main queue, once, when what the application remembers cannot be
    /// written; see `System`.
    void observeStore(Task unwritable);
    /// Runs what is due on the main queue, for a start that has not come to its main loop yet.
    void runDueTasks();

    /// The application begins to end: from now on nobody waits long for a watchdog that hangs.
    void beginToEnd();

    /// The watchdog, as the end of the application needs it. To finish is to try once more what
    /// could not be switched on, to dismiss the watchdog if everything is on, and to wait for its
    /// end. An end without that counts as a crash: the watchdog then switches on what is still off.
    /// Must not be used when this object is gone.
    QuitHelp quitHelp();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace tavrel
