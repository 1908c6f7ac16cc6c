#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/dbus/Bus.h"

namespace tavrel::dbus {

/// What a program on the bus asks of the application.
struct ApplicationCall {
    /// To be named with the answer; never used twice.
    std::uint64_t number = 0;
    /// Empty for the plain wish to see the application.
    std::string action;
    /// What a compositor wants to see before it gives a window the focus; may be empty.
    std::string activationToken;
};

/// How an application's name is described on a message bus.
struct ApplicationNames {
    /// `org.example.Name`: the name to own, from which the object's path follows.
    std::string id;
    /// What `ActivateAction` knows.
    std::vector<std::string> actions;
};

/// One connection to a message bus that owns an application's name there, or waits to, and
/// exports `org.freedesktop.Application`, by which desktops start and reach applications.
///
/// While another connection has the name, that one is asked once to come to the front; its
/// going makes the name ours.
///
/// For one thread. Nothing here blocks, whatever the bus and others on it do.
class ApplicationConversation {
public:
    struct Callbacks {
        /// The name is ours.
        std::function<void()> isFirst;
        /// Another has the name. Returns whether to ask it to the front.
        std::function<bool()> isSecond;
        /// The other has come to the front.
        std::function<void()> otherAnswered;
        /// A call of an action that is known, or of none, that waits for an answer.
        std::function<void(ApplicationCall)> called;
    };

    /// What is handed on to another copy when it is called to the front.
    struct Invitation {
        std::string activationToken;
        std::string startupId;
    };

    /// `numbers` counts calls and outlives this.
    ApplicationConversation(const std::string& address, ApplicationNames names,
                            Invitation invitation, Callbacks callbacks, std::uint64_t& numbers);
    ApplicationConversation(const ApplicationConversation&) = delete;
    ApplicationConversation& operator=(const ApplicationConversation&) = delete;

    bool serve();
    Wait nextWait() const;

    /// Answers the call of that number; does nothing when there is none.
    void answer(std::uint64_t number);

private:
    void requestName();
    void askToTheFront();
    int take(sd_bus_message* message, const std::string& action);
    bool isOwn(sd_bus_message* message) const;

    static int nameAnswered(sd_bus_message* message, void* self, sd_bus_error* error);
    static int otherAnswered(sd_bus_message* message, void* self, sd_bus_error* error);
    static int activate(sd_bus_message* message, void* self, sd_bus_error* error);
    static int activateAction(sd_bus_message* message, void* self, sd_bus_error* error);
    static const sd_bus_vtable methods[];

    const ApplicationNames names_;
    const std::string object_;
    const Invitation invitation_;
    const Callbacks callbacks_;
    std::uint64_t& numbers_;
    std::map<std::uint64_t, Message> unanswered_;
    int requestsLeft_ = 3;
    Bus bus_;
};

}  // namespace tavrel::dbus
