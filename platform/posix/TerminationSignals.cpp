#include "platform/posix/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

namespace tavrel {

namespace {

constexpr int signals[] = {SIGTERM, SIGINT, SIGHUP};

// A signal handler gets no context, so what it writes to has to be found here.
std::atomic<int> signalPipe = -1;  // NOLINT(*-avoid-non-const-global-variables)

void noteSignal(int /*signal*/) {
    const int savedErrno = errno;
    const char byte = 0;
    // A full pipe says already what there is to say.
    [[maybe_unused]] const auto written = write(signalPipe, &byte, 1);
    errno = savedErrno;
}

void handleSignalsWith(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : signals) {
        sigaction(signal, &action, nullptr);
    }
}

}  // namespace

TerminationSignals::TerminationSignals() {
    for (const int end : {pipe_.readEnd.number(), pipe_.writeEnd.number()}) {
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
    signalPipe = pipe_.writeEnd.number();
    handleSignalsWith(noteSignal);
}

TerminationSignals::~TerminationSignals() {
    handleSignalsWith(SIG_DFL);
    signalPipe = -1;
}

}  // namespace tavrel
