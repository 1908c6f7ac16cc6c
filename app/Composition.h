#pragma once

#include <memory>

#include "platform/HotKeys.h"
#include "platform/Platform.h"
#include "platform/SwitchOffGate.h"

namespace tavrel {

/// The system this application runs on, put together: the one place where interfaces
/// meet those who fill them.
///
/// To be made on the main thread once the toolkit's application object exists, and to be
/// destroyed there before it goes. Outlives everything that was handed its `platform()`.
class Composition {
public:
    Composition();
    /// Waits for background jobs to end, then drops what is still queued.
    ~Composition();

    Composition(const Composition&) = delete;
    Composition& operator=(const Composition&) = delete;

    /// Whether it is the custom of this system that an application goes on without its
    /// window, and shows it again when it is called to the front.
    static bool outlivesItsWindow();

    Platform platform();
    HotKeys& hotKeys();
    SwitchOffGate& switchOffGate();

    /// Says that all displays are as the application means to leave them. An end without
    /// this counts as a crash: what is still off then is switched on by others.
    void endInGoodOrder();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace tavrel
