#pragma once

#include "platform/DisplaySwitch.h"
#include "platform/UserDefaults.h"

namespace tavrel {

/// A switch that lets no display go off before what is remembered of displays is in the store, or
/// is known not to get there now. Nobody else has to wait for the disk.
class StoredFirst final : public DisplaySwitch {
public:
    /// Both must outlive it.
    StoredFirst(DisplaySwitch& inner, UserDefaults& store) : inner_(inner), store_(store) {}

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        if (!enabled) {
            store_.settle();
        }
        return inner_.setDisplayEnabled(display, enabled);
    }

private:
    DisplaySwitch& inner_;
    UserDefaults& store_;
};

}  // namespace tavrel
