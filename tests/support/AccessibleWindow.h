#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/AppWindow.h"
#include "tests/support/DBus.h"

namespace tavrel::support {

/// What assistive technology is told of one text or control.
struct AccessibleElement {
    std::string name;
    /// The toolkit-independent name of what it is: "label", "check box", "push button".
    std::string role;
    /// The index of its container in the list of elements; the first one is its own container.
    std::size_t parent = 0;

    bool isChecked() const { return has(4); }
    bool isEnabled() const { return has(8) && has(24); }
    bool isFocused() const { return has(12); }
    /// Of a window: whether it has the focus.
    bool isActive() const { return has(1); }
    bool isBusy() const { return has(3); }
    bool isShowing() const { return has(25); }

    std::uint64_t states = 0;
    /// Its address on the accessibility bus.
    std::string object;

private:
    bool has(unsigned state) const { return (states >> state & 1U) != 0; }
};

/// A program's window as a screen reader reads it, over AT-SPI. Each call asks the program
/// again for everything but an element's role, which never changes. A test reads a window many
/// times while it waits, so no more is asked than most tests want to know.
class AccessibleWindow {
public:
    /// `busAddress` is the accessibility bus's. Throws DBusError when there is no such bus.
    AccessibleWindow(const std::string& busAddress, pid_t process);

    /// Everything the program shows, containers before their contents, in reading order. Empty
    /// while the program has not registered, or when it has ended.
    std::vector<AccessibleElement> elements() const;

    /// The first element with this name; std::nullopt when there is none.
    std::optional<AccessibleElement> find(const std::string& name) const;

    /// Where on the screen it is. Throws DBusError when the element is gone.
    Bounds boundsOf(const AccessibleElement& element) const;
    /// Throws DBusError when the element is gone.
    std::string descriptionOf(const AccessibleElement& element) const;

    /// Does what a press of the element does, without pointer or keyboard. Returns whether the
    /// program accepted it. Throws DBusError when the element is gone or has no action.
    bool act(const AccessibleElement& element) const;

    /// Waits for the element that `find` looks for and acts on it. Looks again when the element
    /// disappears before it is pressed.
    bool actOn(const std::function<std::optional<AccessibleElement>()>& find) const;

private:
    struct Object {
        std::string service;
        std::string path;
    };

    struct Node;

    static std::vector<Object> objectsIn(const Variant& answer);
    std::optional<Object> application() const;
    pid_t processOf(const std::string& service) const;
    std::vector<AccessibleElement> readOnce() const;
    Variant ask(const AccessibleElement& element, const char* interface, const char* method,
                GVariant* floating) const;
    std::vector<Node> read(const std::vector<Object>& objects) const;
    Node readAll(const Object& program) const;
    static void list(Node&& node, std::size_t parent, std::vector<AccessibleElement>& into);

    DBus bus_;
    pid_t process_;
    /// Where the program's elements are, once it has registered.
    mutable std::optional<Object> program_;
    /// By the elements' addresses.
    mutable std::map<std::string, std::string> roles_;
};

}  // namespace tavrel::support
