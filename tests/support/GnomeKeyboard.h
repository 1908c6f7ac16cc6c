#pragma once

#include <cstdint>
#include <string>

#include "tests/support/DBus.h"

namespace tavrel::support {

/// A keyboard of a GNOME desktop that has no hardware, used from afar. It is plugged in as long as
/// this exists.
class GnomeKeyboard {
public:
    /// `busAddress` is the desktop's. Throws DBusError when its compositor takes no keys from afar.
    explicit GnomeKeyboard(const std::string& busAddress);

    /// Presses and releases the key, which has its number from the kernel's `input-event-codes.h`.
    void tap(std::uint32_t key) const;

private:
    void set(std::uint32_t key, bool isDown) const;

    /// The keyboard goes when this connection ends.
    DBus bus_;
    std::string session_;
};

}  // namespace tavrel::support
