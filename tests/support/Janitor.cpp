#include "tests/support/Janitor.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <string>
#include <system_error>
#include <utility>

namespace tavrel::support {

struct Janitor::Message {
    enum class Kind { dismissal, group, display };
    Kind kind;
    /// The group's leader or the display's number.
    int value;
    /// The display's server.
    pid_t server;
};

namespace {

/// Most things one desktop entrusts to its janitor; more are not remembered.
constexpr std::size_t capacity = 32;

void pause(long milliseconds) {
    const timespec time{0, milliseconds * 1'000'000};
    ::nanosleep(&time, nullptr);
}

/// Asks a process group to end, and insists after about three seconds.
void endGroup(pid_t leader) {
    ::kill(-leader, SIGTERM);
    for (int round = 0; round < 300 && ::kill(-leader, 0) == 0; ++round) {
        pause(10);
    }
    ::kill(-leader, SIGKILL);
}

/// The path of a file the X server keeps for a display number, assembled by hand since
/// the formatting functions are not async-signal-safe.
class DisplayFile {
public:
    DisplayFile(int displayNumber, const char* prefix, const char* suffix) {
        append(prefix);
        int divisor = 1;
        while (displayNumber / divisor >= 10) {
            divisor *= 10;
        }
        for (; divisor > 0; divisor /= 10) {
            const std::array<char, 2> digit{static_cast<char>('0' + displayNumber / divisor % 10),
                                            '\0'};
            append(digit.data());
        }
        append(suffix);
    }

    const char* path() const { return path_.data(); }

private:
    void append(const char* text) {
        while (*text != '\0' && length_ + 1 < path_.size()) {
            path_[length_++] = *text++;
        }
    }

    std::array<char, 64> path_{};
    std::size_t length_ = 0;
};

}  // namespace

void removeDisplayFiles(int displayNumber, pid_t server) {
    const DisplayFile lock(displayNumber, "/tmp/.X", "-lock");
    const DisplayFile socket(displayNumber, "/tmp/.X11-unix/X", "");
    const int fd = ::open(lock.path(), O_RDONLY | O_CLOEXEC);
    std::array<char, 16> content{};
    const ssize_t length = fd < 0 ? 0 : ::read(fd, content.data(), content.size() - 1);
    ::close(fd);
    pid_t holder = 0;
    for (ssize_t i = 0; i < length; ++i) {
        const char digit = content[static_cast<std::size_t>(i)];
        if (digit >= '0' && digit <= '9') {
            holder = holder * 10 + (digit - '0');
        }
    }
    if (holder == server) {
        ::unlink(socket.path());
        ::unlink(lock.path());
    }
}

/// The janitor's whole life. It was forked from a process with other threads, so only
/// async-signal-safe calls may be made here.
void Janitor::serve(int pipe, const char* folder) {
    ::setsid();
    ::prctl(PR_SET_NAME, "test-janitor");
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        // Nothing may end it before its duty is done.
        ::signal(number, SIG_IGN);
    }
    ::dup2(pipe, 0);
    ::close_range(1, ~0U, 0);

    std::array<Message, capacity> entrusted{};
    std::size_t count = 0;
    Message message{};
    while (::read(0, &message, sizeof message) == sizeof message) {
        if (message.kind == Message::Kind::dismissal) {
            ::_exit(0);
        }
        if (count < capacity) {
            entrusted[count++] = message;
        }
    }
    for (std::size_t i = count; i-- > 0;) {
        if (entrusted[i].kind == Message::Kind::group) {
            endGroup(entrusted[i].value);
        }
    }
    for (const Message& each : entrusted) {
        if (each.kind == Message::Kind::display) {
            removeDisplayFiles(each.value, each.server);
        }
    }
    ::execl("/bin/rm", "rm", "-rf", "--", folder, nullptr);
    ::_exit(1);
}

Janitor::Janitor(const std::filesystem::path& folder) {
    Pipe pipe;
    const std::string path = folder.string();
    pid_ = ::fork();
    if (pid_ < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (pid_ == 0) {
        ::close(pipe.writeEnd.get());
        serve(pipe.readEnd.get(), path.c_str());
    }
    pipe_ = std::move(pipe.writeEnd);
}

Janitor::~Janitor() {
    tell({Message::Kind::dismissal, 0, 0});
    ::waitpid(pid_, nullptr, 0);
}

void Janitor::watchGroup(pid_t leader) {
    tell({Message::Kind::group, leader, 0});
}

void Janitor::watchDisplay(int number, pid_t server) {
    tell({Message::Kind::display, number, server});
}

void Janitor::tell(const Message& message) {
    while (::write(pipe_.get(), &message, sizeof message) < 0 && errno == EINTR) {
    }
}

}  // namespace tavrel::support
