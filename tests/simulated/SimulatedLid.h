#pragma once

#include <functional>
#include <utility>

#include "platform/Lid.h"

namespace tavrel {

/// A lid that a test opens and closes. It tells its observer before the call returns.
class SimulatedLid : public Lid {
public:
    bool isClosed() const override { return isClosed_; }
    void observe(std::function<void()> changed) override { changed_ = std::move(changed); }

    void close() { set(true); }
    void open() { set(false); }
    bool hasObserver() const { return changed_ != nullptr; }

private:
    void set(bool isClosed) {
        const bool isNew = isClosed_ != isClosed;
        isClosed_ = isClosed;
        if (isNew && changed_ != nullptr) {
            changed_();
        }
    }

    bool isClosed_ = false;
    std::function<void()> changed_;
};

}  // namespace tavrel
