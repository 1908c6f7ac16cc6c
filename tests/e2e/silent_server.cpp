// Preloaded into a program that changes the layout of an X server: just before the request that
// SILENT_BEFORE names, "grab" or "screen size", the server stops, and for the thread that makes it
// the time that it is ready to wait for an answer has passed at once. When that thread gives the
// connection up, the file that SILENT_MARK names appears; where it exists, nothing stops. So a
// server is silent for longer than anybody waits, and no test lasts as long as that.

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>
#include <string_view>

namespace {

template <typename Function>
Function* realOne(const char* name) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the loader's way.
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

struct Wait {
    bool isForSilentServer = false;
    /// How far the thread's clock is ahead.
    long milliseconds = 0;
};

Wait& waitOfThisThread() {
    thread_local Wait wait;
    return wait;
}

bool hasStopped(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    const auto state = text.rfind(") ");
    return state != std::string::npos && text.compare(state + 2, 1, "T") == 0;
}

void stopServerIfTold(xcb_connection_t* connection, std::string_view request) {
    const char* awaited = std::getenv("SILENT_BEFORE");
    const char* mark = std::getenv("SILENT_MARK");
    if (awaited == nullptr || mark == nullptr || request != awaited || access(mark, F_OK) == 0) {
        return;
    }
    ucred server{};
    socklen_t size = sizeof server;
    if (getsockopt(xcb_get_file_descriptor(connection), SOL_SOCKET, SO_PEERCRED, &server, &size) !=
            0 ||
        server.pid <= 0 || kill(server.pid, SIGSTOP) != 0) {
        std::abort();
    }
    while (!hasStopped(server.pid)) {
        constexpr useconds_t interval = 1000;
        usleep(interval);
    }
    waitOfThisThread().isForSilentServer = true;
}

}  // namespace

// NOLINTBEGIN(readability-identifier-naming): they take those functions' places.

extern "C" xcb_void_cookie_t xcb_grab_server(xcb_connection_t* connection) {
    static const auto real = realOne<decltype(xcb_grab_server)>("xcb_grab_server");
    stopServerIfTold(connection, "grab");
    return real(connection);
}

extern "C" xcb_void_cookie_t xcb_randr_set_screen_size_checked(xcb_connection_t* connection,
                                                               xcb_window_t window, uint16_t width,
                                                               uint16_t height,
                                                               uint32_t widthMillimetres,
                                                               uint32_t heightMillimetres) {
    static const auto real =
        realOne<decltype(xcb_randr_set_screen_size_checked)>("xcb_randr_set_screen_size_checked");
    stopServerIfTold(connection, "screen size");
    return real(connection, window, width, height, widthMillimetres, heightMillimetres);
}

// NOLINTEND(readability-identifier-naming)

extern "C" int poll(pollfd* descriptors, nfds_t count, int timeout) {
    static const auto real = realOne<int(pollfd*, nfds_t, int)>("poll");
    Wait& wait = waitOfThisThread();
    if (wait.isForSilentServer && timeout >= 0) {
        wait.milliseconds += timeout + 1;
        return 0;
    }
    return real(descriptors, count, timeout);
}

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    static const auto real = realOne<int(clockid_t, timespec*)>("clock_gettime");
    const int result = real(clock, time);
    const long ahead = waitOfThisThread().milliseconds;
    if (result == 0 && clock == CLOCK_MONOTONIC && ahead > 0) {
        constexpr long perSecond = 1000;
        time->tv_sec += ahead / perSecond + 1;
    }
    return result;
}

extern "C" int shutdown(int socket, int how) noexcept {
    static const auto real = realOne<int(int, int)>("shutdown");
    const int result = real(socket, how);
    if (waitOfThisThread().isForSilentServer) {
        waitOfThisThread() = {};
        std::ofstream(std::getenv("SILENT_MARK")).flush();
    }
    return result;
}
