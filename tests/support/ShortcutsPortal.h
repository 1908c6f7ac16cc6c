#pragma once

#include <memory>
#include <string>
#include <vector>

namespace tavrel::support {

/// A desktop's portal for global shortcuts on a message bus, and the user in front of it. It
/// behaves as portals since 1.19.4 do, and badly on request.
class ShortcutsPortal {
public:
    struct Behaviour {
        /// Whether it can be told who an application is.
        bool hasRegistry = true;
        /// Whether it knows of shortcuts at all.
        bool hasShortcuts = true;
        /// Whether the user answers by themselves, or only at `answer`.
        bool answersAtOnce = true;
        /// 0 yes, 1 no.
        unsigned outcome = 0;
        /// What the user binds.
        std::string trigger = "Ctrl+Alt+Super+W";
    };

    /// Blocks until it can be asked. Throws std::runtime_error when the bus refuses.
    explicit ShortcutsPortal(const std::string& busAddress)
        : ShortcutsPortal(busAddress, Behaviour{}) {}
    ShortcutsPortal(const std::string& busAddress, Behaviour behaviour);
    /// Blocks until it has left the bus.
    ~ShortcutsPortal();
    ShortcutsPortal(const ShortcutsPortal&) = delete;
    ShortcutsPortal& operator=(const ShortcutsPortal&) = delete;

    /// What it was asked so far, in short.
    std::vector<std::string> asked() const;

    /// The user answers the question that is open.
    void answer();
    /// The user presses what is bound to the shortcut of that name.
    void press(const std::string& shortcut);
    /// The user binds something else.
    void rebind(const std::string& trigger);
    void closeSession();

private:
    struct Served;
    std::unique_ptr<Served> served_;
};

}  // namespace tavrel::support
