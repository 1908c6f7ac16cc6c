#include "tests/support/Janitor.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <string>
#include <system_error>
#include <utility>

#include "platform/posix/WakeUp.h"

namespace tavrel::support {

struct Janitor::Message {
    enum class Kind { dismissal, group, endedGroup, display };
    Kind kind;
    /// The group's leader or the display's number.
    int value;
};

namespace {

void pause(long milliseconds) {
    const timespec time{0, milliseconds * 1'000'000};
    ::nanosleep(&time, nullptr);
}

/// Asks a process group to end, and kills it after about three seconds.
void endGroup(pid_t leader) {
    ::kill(-leader, SIGTERM);
    for (int round = 0; round < 300 && ::kill(-leader, 0) == 0; ++round) {
        pause(10);
    }
    ::kill(-leader, SIGKILL);
}

/// The address of a display's socket. Built by hand, because the formatting functions are not
/// async-signal-safe.
sockaddr_un socketAddress(int displayNumber) {
    constexpr char prefix[] = "/tmp/.X11-unix/X";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    char* end = std::copy_n(prefix, sizeof prefix - 1, address.sun_path);
    int divisor = 1;
    while (displayNumber / divisor >= 10) {
        divisor *= 10;
    }
    for (; divisor > 0; divisor /= 10) {
        *end++ = static_cast<char>('0' + displayNumber / divisor % 10);
    }
    return address;
}

}  // namespace

void removeDisplayFiles(int displayNumber) {
    const sockaddr_un address = socketAddress(displayNumber);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    // Another server may have taken the number meanwhile.
    const bool abandoned =
        ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
        errno == ECONNREFUSED;
    ::close(fd);
    if (abandoned) {
        ::unlink(address.sun_path);
    }
}

/// Removes a group from the first `count` messages. Returns how many are left.
std::size_t Janitor::forget(std::span<Message> entrusted, std::size_t count, pid_t leader) {
    const auto end = entrusted.begin() + static_cast<std::ptrdiff_t>(count);
    const auto rest = std::remove_if(entrusted.begin(), end, [&](const Message& each) {
        return each.kind == Message::Kind::group && each.value == leader;
    });
    return static_cast<std::size_t>(rest - entrusted.begin());
}

/// What the janitor's process runs. It was forked from a process with other threads, so only
/// async-signal-safe calls are allowed here.
void Janitor::serve(int pipe, const char* folder) {
    ::setsid();
    ::prctl(PR_SET_NAME, "test-janitor");
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        // No signal may end it before it has cleaned up.
        ::signal(number, SIG_IGN);
    }
    ::dup2(pipe, 0);
    ::close_range(1, ~0U, 0);

    // More than any test needs; what does not fit is ignored.
    std::array<Message, 32> entrusted{};
    std::size_t count = 0;
    Message message{};
    while (::read(0, &message, sizeof message) == sizeof message) {
        if (message.kind == Message::Kind::dismissal) {
            ::_exit(0);
        }
        if (message.kind == Message::Kind::endedGroup) {
            count = forget(entrusted, count, message.value);
        } else if (count < entrusted.size()) {
            entrusted[count++] = message;
        }
    }
    for (std::size_t i = count; i-- > 0;) {
        if (entrusted[i].kind == Message::Kind::group) {
            endGroup(entrusted[i].value);
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (entrusted[i].kind == Message::Kind::display) {
            removeDisplayFiles(entrusted[i].value);
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
        ::close(pipe.writeEnd.number());
        serve(pipe.readEnd.number(), path.c_str());
    }
    pipe_ = std::move(pipe.writeEnd);
}

Janitor::~Janitor() {
    tell({Message::Kind::dismissal, 0});
    ::waitpid(pid_, nullptr, 0);
}

void Janitor::watchGroup(pid_t leader) {
    tell({Message::Kind::group, leader});
}

void Janitor::forgetGroup(pid_t leader) {
    tell({Message::Kind::endedGroup, leader});
}

void Janitor::watchDisplay(int number) {
    tell({Message::Kind::display, number});
}

void Janitor::tell(const Message& message) {
    while (::write(pipe_.number(), &message, sizeof message) < 0 && errno == EINTR) {
    }
}

}  // namespace tavrel::support
