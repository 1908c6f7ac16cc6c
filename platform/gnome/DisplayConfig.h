#pragma once

#include <optional>

#include "platform/gnome/Configuration.h"
#include "platform/gnome/MonitorState.h"

namespace tavrel::gnome {

/// How a question or a request has ended.
enum class Reply {
    done,
    /// It was made for hardware that has changed since, or may not be made at all.
    denied,
    refused,
    /// There is no such service, or it offers no such thing.
    absent,
    /// No answer has come. It may have been done, or may be still.
    none,
};

/// Where a compositor is asked for its monitors, and told how to use them. For one thread.
class DisplayConfig {
public:
    virtual ~DisplayConfig() = default;

    struct Reading {
        Reply reply = Reply::none;
        /// std::nullopt unless done.
        std::optional<MonitorState> state = {};
    };

    virtual Reading read() = 0;

    /// Whether layouts may be changed by programs. True where nothing is said about it.
    virtual bool isAllowed() = 0;

    enum class Method {
        /// Says what would become of it.
        verify = 0,
        /// Until the session ends, or somebody changes it. There is another, which asks the user
        /// and waits: not for a program that must not depend on what the user sees.
        temporary = 1,
    };

    virtual Reply apply(const Configuration& configuration, Method method) = 0;
};

}  // namespace tavrel::gnome
