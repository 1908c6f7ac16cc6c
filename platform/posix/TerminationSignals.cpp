#include "platform/posix/TerminationSignals.h"

#include <atomic>
#include <csignal>

namespace tavrel {

namespace {

constexpr int signals[] = {SIGTERM, SIGINT, SIGHUP};

// A signal handler gets no context, so what it wakes has to be found here.
std::atomic<const WakeUp*> woken = nullptr;  // NOLINT(*-avoid-non-const-global-variables)

void noteSignal(int /*signal*/) {
    if (const WakeUp* wakeUp = woken) {
        wakeUp->wake();
    }
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
    woken = &signalArrived_;
    handleSignalsWith(noteSignal);
}

TerminationSignals::~TerminationSignals() {
    handleSignalsWith(SIG_DFL);
    woken = nullptr;
}

}  // namespace tavrel
