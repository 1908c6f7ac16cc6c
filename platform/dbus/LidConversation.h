#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "platform/dbus/Bus.h"

namespace tavrel::dbus {

/// One connection to a message bus, over which the power services are asked about the lid.
///
/// UPower's word counts; while it gives none, the session manager's does. UPower tells of each
/// change. The session manager does not (its documentation marks the property so), and is
/// therefore asked again every two seconds as long as there is only its word. Neither is
/// started for this.
///
/// For one thread. Nothing here blocks, whatever the bus and the services do.
class LidConversation {
public:
    /// `address` as the bus libraries write it.
    explicit LidConversation(const std::string& address);
    LidConversation(const LidConversation&) = delete;
    LidConversation& operator=(const LidConversation&) = delete;

    /// Handles what has arrived and sends what is due. Returns false when there is no such bus
    /// or the connection has ended; then it is over for good.
    bool serve();

    /// What to poll for, and until when, before `serve` has something to do.
    Wait nextWait() const;

    /// The word of the services so far: false when neither has said that it is closed.
    bool isClosed() const;

private:
    using Clock = std::chrono::steady_clock;

    struct Service {
        const char* name;
        const char* object;
        const char* interface;
        const char* property;
    };
    static constexpr std::size_t upower = 0;
    static constexpr std::size_t login = 1;
    static const std::array<Service, 2> services;

    /// A service's word, and what the bus library hands back with its answer.
    struct Word {
        LidConversation* conversation = nullptr;
        std::optional<bool> isClosed = std::nullopt;
    };

    void listen();
    void ask();
    void planNextQuestion();
    void askOne(std::size_t service);

    static int answered(sd_bus_message* message, void* word, sd_bus_error* error);
    static int changed(sd_bus_message* message, void* conversation, sd_bus_error* error);

    std::array<Word, 2> words_;
    Clock::time_point nextQuestion_ = Clock::now();
    Bus bus_;
};

}  // namespace tavrel::dbus
