#include "watchdog/program/ProcessSetup.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <charconv>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string_view>

namespace tavrel::watchdog {
namespace {

constexpr int firstFree = STDERR_FILENO + 1;

bool isStreamSocket(int descriptor) {
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_STREAM;
}

/// A path that is relative to the current folder would mean another file after `chdir`.
void makeAbsolute(const char* variable) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0' || *value == '/') {
        return;
    }
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(value, error);
    if (!error) {
        setenv(variable, absolute.c_str(), 1);
    }
}

/// On a Mac the system's libraries may have descriptors of their own by now, which must not
/// be closed; there the application passes none on when it starts this process.
void closeAllFrom([[maybe_unused]] int first) {
#if defined(__GLIBC__)
    closefrom(first);
#elif !defined(__APPLE__)
    const long limit = sysconf(_SC_OPEN_MAX);
    for (int descriptor = first; descriptor < limit; ++descriptor) {
        close(descriptor);
    }
#endif
}

void ignoreRequestsToEnd() {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE}) {
        std::signal(signal, SIG_IGN);
    }
}

}  // namespace

std::optional<int> inheritedSocket(std::span<char* const> arguments) {
    if (arguments.size() != 2 && arguments.size() != 3) {
        return std::nullopt;
    }
    const std::string_view text = arguments[1];
    int descriptor = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), descriptor);
    if (error != std::errc() || end != text.data() + text.size() || !isStreamSocket(descriptor)) {
        return std::nullopt;
    }
    return descriptor;
}

FileDescriptor detachProcess(int socket) {
    ignoreRequestsToEnd();
    // Fails only when it has been done already.
    setsid();

    // Out of the way of the standard streams first, in case it is one of them.
    const int moved = fcntl(socket, F_DUPFD, firstFree + 1);
    dup2(moved, firstFree);
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nowhere, stream);
    }
    closeAllFrom(firstFree + 1);
    fcntl(firstFree, F_SETFD, FD_CLOEXEC);

    makeAbsolute("XAUTHORITY");
    [[maybe_unused]] const int changed = chdir("/");
    return FileDescriptor(firstFree);
}

}  // namespace tavrel::watchdog
