#pragma once

#include <xcb/damage.h>

#include <chrono>
#include <cstddef>
#include <optional>

#include "tests/bench/Clock.h"
#include "tests/support/XConnection.h"

namespace tavrel::bench {

/// Sees from outside when a program's window appears on an X server and when it changes.
class WindowWatch {
public:
    explicit WindowWatch(const std::string& displayName);

    struct Opening {
        Time mapped;
        /// When it first looked as it still did once it had stopped changing.
        Time painted;
        /// How often it was drawn to until then.
        int paints = 0;
    };

    /// Blocks until a window has opened and then has not been drawn to for `quiet`. Throws
    /// std::runtime_error when none opens, or it does not come to rest.
    Opening awaitOpening(std::chrono::milliseconds quiet = std::chrono::milliseconds(700));

    /// Blocks until the window has not been drawn to for `quiet`. Throws std::runtime_error
    /// when that never is so.
    void awaitRest(std::chrono::milliseconds quiet);

    /// How often any window has been drawn to since this was asked last. An update of several
    /// places at once counts once.
    int takePaints();

private:
    struct Event {
        Time time;
        bool isMap = false;
        xcb_window_t window = XCB_NONE;
    };

    std::optional<Event> next(Time deadline);
    std::optional<Event> read(const xcb_generic_event_t& event);
    void watch(xcb_window_t window);
    bool isMainWindow(xcb_window_t window) const;
    std::size_t picture(xcb_window_t window) const;

    support::XConnection connection_;
    std::uint8_t firstDamageEvent_ = 0;
};

}  // namespace tavrel::bench
