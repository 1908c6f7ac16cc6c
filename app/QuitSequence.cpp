#include "app/QuitSequence.h"

#include <cstdlib>
#include <thread>

namespace tavrel {

void QuitSequence::run(std::chrono::milliseconds limit) {
    if (hasRun_) {
        return;
    }
    hasRun_ = true;
    // Never joined: it either ends the process or ends with it.
    std::thread([limit] {
        std::this_thread::sleep_for(limit);
        std::_Exit(EXIT_FAILURE);
    }).detach();
    gate_.close();
    gate_.waitUntilIdle();
    delegate_.applicationWillTerminate();
}

}  // namespace tavrel
