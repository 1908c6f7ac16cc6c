#pragma once

#include <memory>
#include <utility>

#include "platform/MainQueue.h"

namespace tavrel {

/// A decorator that changes nothing, to be derived from.
class ForwardingMainQueue : public MainQueue {
public:
    /// `inner` must outlive it.
    explicit ForwardingMainQueue(MainQueue& inner) : inner_(inner) {}

    void async(Task task) override { inner_.async(std::move(task)); }
    void asyncAfter(Delay delay, Task task) override { inner_.asyncAfter(delay, std::move(task)); }
    std::unique_ptr<RepeatingTimer> repeat(Delay interval, Task tick) override {
        return inner_.repeat(interval, std::move(tick));
    }
    bool isCurrent() const override { return inner_.isCurrent(); }

private:
    MainQueue& inner_;
};

}  // namespace tavrel
