#pragma once

#include "platform/DisplayID.h"

namespace tavrel {

/// Told by the window server's change side before it changes anything.
class X11ConfigurationObserver {
public:
    virtual ~X11ConfigurationObserver() = default;

    /// This application is about to change the layout on account of `display`. From any
    /// thread; must not wait for a change to end.
    virtual void beginConfiguration(DisplayID display) = 0;
};

}  // namespace tavrel
