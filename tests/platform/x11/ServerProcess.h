#pragma once

#include <sys/socket.h>

#include <csignal>
#include <stdexcept>

#include "tests/support/VirtualDesktop.h"
#include "tests/support/XConnection.h"

namespace tavrel {

/// The process of a desktop's X server, which can be held up: it takes in what is said to it,
/// and does and answers nothing. From any thread.
class ServerProcess {
public:
    /// Throws std::runtime_error when the server doesn't answer.
    explicit ServerProcess(const support::VirtualDesktop& desktop) {
        const support::XConnection connection(desktop.displayName());
        ucred listener{};
        socklen_t size = sizeof listener;
        ::getsockopt(xcb_get_file_descriptor(connection.get()), SOL_SOCKET, SO_PEERCRED, &listener,
                     &size);
        process_ = listener.pid;
        if (process_ <= 0) {
            throw std::runtime_error("nobody knows the X server's process");
        }
    }
    ~ServerProcess() { resume(); }
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    void pause() const { ::kill(process_, SIGSTOP); }
    void resume() const { ::kill(process_, SIGCONT); }

private:
    pid_t process_ = 0;
};

}  // namespace tavrel
