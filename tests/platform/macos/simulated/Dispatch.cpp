#include "tests/platform/macos/simulated/Dispatch.h"

#include <dispatch/dispatch.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/platform/macos/simulated/Calls.h"

/// Runs each piece of work on a thread of its own.
struct SimulatedDispatchQueue {
    std::mutex mutex;
    bool holds = false;
    std::vector<std::function<void()>> held;
    std::vector<std::thread> threads;

    ~SimulatedDispatchQueue() { tavrel::simulatedMac::joinWork(); }
};

namespace tavrel::simulatedMac {

namespace {

SimulatedDispatchQueue& userInitiated() {
    static SimulatedDispatchQueue queue;
    return queue;
}

}  // namespace

void holdWork() {
    const std::lock_guard lock(userInitiated().mutex);
    userInitiated().holds = true;
}

void resumeWork() {
    const std::lock_guard lock(userInitiated().mutex);
    userInitiated().holds = false;
    for (auto& work : std::exchange(userInitiated().held, {})) {
        userInitiated().threads.emplace_back(std::move(work));
    }
}

std::size_t heldWork() {
    const std::lock_guard lock(userInitiated().mutex);
    return userInitiated().held.size();
}

void joinWork() {
    std::unique_lock lock(userInitiated().mutex);
    auto threads = std::exchange(userInitiated().threads, {});
    lock.unlock();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace tavrel::simulatedMac

using namespace tavrel::simulatedMac;

extern "C" {

dispatch_queue_t dispatch_get_global_queue(std::intptr_t identifier, std::uintptr_t flags) {
    note("dispatch_get_global_queue(" + std::to_string(identifier) + ", " + std::to_string(flags) +
         ")");
    return identifier == QOS_CLASS_USER_INITIATED && flags == 0 ? &userInitiated() : nullptr;
}

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
    if (queue != &userInitiated()) {
        std::fputs("work for a queue that does not exist\n", stderr);
        std::abort();
    }
    const std::lock_guard lock(queue->mutex);
    if (queue->holds) {
        queue->held.emplace_back([work, context] { work(context); });
    } else {
        queue->threads.emplace_back(work, context);
    }
}
}
