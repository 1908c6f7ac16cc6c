#include "platform/posix/Process.h"

#include <atomic>
#include <csignal>

#ifdef __GLIBC__
#include <malloc.h>
#endif

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

void shareOneHeap() {
#ifdef __GLIBC__
    mallopt(M_ARENA_MAX, 1);
    // Set, or it would grow with each big block that is freed, and such blocks would stay.
    constexpr int bigBlock = 128 * 1024;
    mallopt(M_MMAP_THRESHOLD, bigBlock);
#endif
}

void ignoreBrokenPipes() {
    std::signal(SIGPIPE, SIG_IGN);
}

TerminationSignals::TerminationSignals() {
    woken = &signalArrived_;
    handleSignalsWith(noteSignal);
}

TerminationSignals::~TerminationSignals() {
    handleSignalsWith(SIG_DFL);
    woken = nullptr;
}

}  // namespace tavrel
