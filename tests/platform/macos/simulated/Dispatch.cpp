#include "tests/platform/macos/simulated/Dispatch.h"

#include <dispatch/dispatch.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/platform/macos/simulated/Calls.h"

struct SimulatedDispatchQueue {};

namespace tavrel::simulatedMac {

namespace {

struct Work {
    dispatch_function_t function;
    void* context;
};

/// A thread for each piece of work.
class Queue {
public:
    ~Queue() { join(); }

    void add(const Work& work) {
        const std::lock_guard lock(mutex_);
        if (holds_) {
            held_.push_back(work);
        } else {
            start(work);
        }
    }

    void hold(bool holds) {
        const std::lock_guard lock(mutex_);
        holds_ = holds;
        if (!holds) {
            for (const Work& work : std::exchange(held_, {})) {
                start(work);
            }
        }
    }

    std::size_t held() {
        const std::lock_guard lock(mutex_);
        return held_.size();
    }

    void join() {
        std::vector<std::thread> threads;
        {
            const std::lock_guard lock(mutex_);
            threads.swap(threads_);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

private:
    void start(const Work& work) {
        threads_.emplace_back([work] { work.function(work.context); });
    }

    std::mutex mutex_;
    std::vector<Work> held_;
    std::vector<std::thread> threads_;
    bool holds_ = false;
};

Queue& userInitiated() {
    static Queue queue;
    return queue;
}

}  // namespace

void holdWork() {
    userInitiated().hold(true);
}

void letWorkGoOn() {
    userInitiated().hold(false);
}

std::size_t heldWork() {
    return userInitiated().held();
}

void joinWork() {
    userInitiated().join();
}

}  // namespace tavrel::simulatedMac

extern "C" {

dispatch_queue_t dispatch_get_global_queue(std::intptr_t identifier, std::uintptr_t flags) {
    tavrel::simulatedMac::note("dispatch_get_global_queue(" + std::to_string(identifier) + ", " +
                               std::to_string(flags) + ")");
    static SimulatedDispatchQueue queue;
    return identifier == QOS_CLASS_USER_INITIATED && flags == 0 ? &queue : nullptr;
}

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
    if (queue != dispatch_get_global_queue(QOS_CLASS_USER_INITIATED, 0)) {
        std::fputs("work for a queue that there is not\n", stderr);
        std::abort();
    }
    tavrel::simulatedMac::userInitiated().add({work, context});
}
}
