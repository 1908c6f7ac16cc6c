#pragma once

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace tavrel {

/// Runs a function in a child process, which exits with the function's result and is
/// killed by the destructor if it has not ended.
class ForkedProcess {
public:
    explicit ForkedProcess(const std::function<int()>& body) : id_(fork()) {
        if (id_ == 0) {
            std::_Exit(body());
        }
    }
    ~ForkedProcess() {
        if (id_ > 0) {
            kill();
        }
    }
    ForkedProcess(const ForkedProcess&) = delete;
    ForkedProcess& operator=(const ForkedProcess&) = delete;

    /// Blocks until the process has ended. Returns the function's result, or -1 when the
    /// process ended otherwise.
    int wait() {
        int status = 0;
        const bool ended = id_ > 0 && waitpid(id_, &status, 0) == id_;
        id_ = -1;
        return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// Kills the process and waits for its end.
    void kill() {
        ::kill(id_, SIGKILL);
        wait();
    }

private:
    pid_t id_;
};

}  // namespace tavrel
