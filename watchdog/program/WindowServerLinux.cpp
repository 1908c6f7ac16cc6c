#include "platform/posix/BufferedUserDefaults.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/session/LinuxWindowServer.h"
#include "watchdog/program/WindowServer.h"

namespace tavrel::watchdog {

namespace {

struct Parts {
    explicit Parts(session::WindowServerKind kind)
        : windowServer(session::makeWindowServer(kind, userDefaults)) {}

    BufferedUserDefaults userDefaults{std::make_unique<FileUserDefaults>(defaultsPath())};
    session::LinuxWindowServer windowServer;
};

}  // namespace

WindowServer makeWindowServer(std::string_view name) {
    const auto named = session::kindNamed(name);
    const auto parts =
        std::make_shared<Parts>(named.has_value() ? *named : session::chooseWindowServer());
    return {.displaySwitch = {parts, parts->windowServer.displaySwitch.get()},
            .queries = {parts, parts->windowServer.queries.get()}};
}

}  // namespace tavrel::watchdog
