#pragma once

#include <memory>

#include "platform/HotKeys.h"
#include "platform/Platform.h"
#include "platform/SwitchOffGate.h"

namespace tavrel {

/// The application's platform, put together: what its `System` fills, what is the same on
/// all of them, and the decorators around both.
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

    /// Whether the application is to go on without its window; see `System`.
    bool outlivesItsWindow() const;

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
