#include "app/QuitSequence.h"

#include <cstdlib>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace tavrel {

namespace {

/// How often in its limit a call is looked at.
constexpr int looksPerLimit = 20;

}  // namespace

/// What the thread looks at that ends a hanging process. It outlives the sequence.
struct QuitSequence::Watched {
    std::mutex mutex;
    /// Empty when the sequence is over: what it calls may be gone.
    QuitHelp help;
    std::uint64_t steps = 0;
    bool isHandedOver = false;

    void step() {
        const std::lock_guard lock(mutex);
        ++steps;
    }
    /// Something else as soon as there has been some.
    std::pair<std::uint64_t, std::uint64_t> progress() {
        const std::lock_guard lock(mutex);
        return {steps, help.changesEnded ? help.changesEnded() : 0};
    }
    bool isNothingLeftToUs() {
        const std::lock_guard lock(mutex);
        return !help.isHandedOver || (isHandedOver && help.isHandedOver());
    }
    void end() {
        const std::lock_guard lock(mutex);
        help = {};
        ++steps;
    }
};

void QuitSequence::run(std::chrono::milliseconds limit) {
    if (hasRun_) {
        return;
    }
    hasRun_ = true;
    const auto watched = std::make_shared<Watched>();
    watched->help = help_;
    try {
        // Never joined: it either ends the process or ends with it.
        std::thread([watched, limit] { endProcessWhenItHangs(watched, limit); }).detach();
    } catch (const std::system_error&) {
        // What is off comes back all the same; only what hangs then is not cut short.
    }

    gate_.close();
    help_.handOver(delegate_.inactiveDisplays());
    {
        const std::lock_guard lock(watched->mutex);
        watched->isHandedOver = true;
    }
    gate_.waitUntilIdle(longestWait);
    watched->step();
    delegate_.applicationWillTerminate();
    watched->step();
    help_.finish();
    watched->end();
}

void QuitSequence::endProcessWhenItHangs(const std::shared_ptr<Watched>& watched,
                                         std::chrono::milliseconds limit) {
    auto seen = watched->progress();
    for (int looksInVain = 0; looksInVain < looksPerLimit;) {
        std::this_thread::sleep_for(limit / looksPerLimit);
        const auto now = watched->progress();
        looksInVain = now == std::exchange(seen, now) ? looksInVain + 1 : 0;
    }
    std::_Exit(watched->isNothingLeftToUs() ? EXIT_SUCCESS : EXIT_FAILURE);
}

}  // namespace tavrel
