#pragma once

#include <functional>
#include <string>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"

namespace tavrel::bench {

/// One display of a window server, seen and switched beside the application.
class OneDisplay {
public:
    /// The one at that connector. Both servers must outlive it. Throws std::runtime_error when
    /// there is none.
    OneDisplay(DisplaySwitch& displaySwitch, DisplayQueries& queries, const std::string& connector);

    bool isOn() const { return queries_.now()->isActive(display_); }
    /// Throws std::runtime_error when the server refuses.
    void set(bool on) const;

    /// Milliseconds from the beginning of `act` until the server says that the display is so.
    double timed(bool on, const std::function<void()>& act) const;

private:
    DisplaySwitch& switch_;
    DisplayQueries& queries_;
    const DisplayID display_;
};

}  // namespace tavrel::bench
