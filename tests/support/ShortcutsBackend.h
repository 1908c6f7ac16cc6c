#pragma once

#include <memory>
#include <string>
#include <vector>

namespace tavrel::support {

/// What a desktop has behind xdg-desktop-portal, for global shortcuts only, on a message bus. It
/// grants what is asked for and binds it to "Super+F9".
class ShortcutsBackend {
public:
    static constexpr const char* name = "org.freedesktop.impl.portal.desktop.stub";
    static constexpr const char* interface = "org.freedesktop.impl.portal.GlobalShortcuts";

    /// Blocks until it can be asked. Throws std::runtime_error when the bus refuses.
    explicit ShortcutsBackend(const std::string& busAddress);
    /// Blocks until it has left the bus.
    ~ShortcutsBackend();
    ShortcutsBackend(const ShortcutsBackend&) = delete;
    ShortcutsBackend& operator=(const ShortcutsBackend&) = delete;

    /// The shortcuts that it was asked to bind so far, with what was wished for.
    std::vector<std::string> bound() const;

    /// The user presses what is bound.
    void press();
    /// The user binds something else.
    void rebind(const std::string& trigger);

private:
    struct Served;
    std::unique_ptr<Served> served_;
};

}  // namespace tavrel::support
