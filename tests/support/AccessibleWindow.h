#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/AppWindow.h"
#include "tests/support/DBus.h"

namespace tavrel::support {

/// What assistive technology is told of one text or control.
struct AccessibleElement {
    std::string name;
    std::string description;
    /// The toolkit-independent name of what it is: "label", "check box", "push button".
    std::string role;
    Bounds bounds;
    /// Its place in the list it came with, and its container's there; the first element
    /// is its own.
    std::size_t parent = 0;

    bool isChecked() const { return has(4); }
    bool isEnabled() const { return has(8) && has(24); }
    bool isFocused() const { return has(12); }
    bool isBusy() const { return has(3); }
    bool isShowing() const { return has(25); }

    std::uint64_t states = 0;
    /// Its address on the accessibility bus.
    std::string object;

private:
    bool has(unsigned state) const { return (states >> state & 1U) != 0; }
};

/// A program's window as a screen reader meets it, over AT-SPI. It asks the program anew
/// each time and keeps nothing.
class AccessibleWindow {
public:
    /// `busAddress` is the accessibility bus's. Throws DBusError when it is not there.
    AccessibleWindow(const std::string& busAddress, pid_t process);

    /// Everything the program shows, containers before what they hold, in reading order.
    /// Empty while the program has not introduced itself or has gone.
    std::vector<AccessibleElement> elements() const;

    /// The first element with this name.
    std::optional<AccessibleElement> find(const std::string& name) const;

    /// Does what a press of the element does, without pointer or keyboard. Returns whether
    /// the program took it. Throws DBusError when the element has gone or has no action.
    bool act(const AccessibleElement& element) const;

    /// Awaits the element that `find` looks for and acts on it. One that goes between the
    /// look and the press has not been pressed and is looked for again.
    bool actOn(const std::function<std::optional<AccessibleElement>()>& find) const;

private:
    struct Object {
        std::string service;
        std::string path;
    };

    std::vector<Object> children(const Object& parent) const;
    std::optional<Object> application() const;
    pid_t processOf(const std::string& service) const;
    AccessibleElement describe(const Object& object) const;
    void collect(const Object& object, std::size_t parent,
                 std::vector<AccessibleElement>& into) const;

    DBus bus_;
    pid_t process_;
    mutable std::string service_;
};

}  // namespace tavrel::support
