#include "controller/ObjectWillChange.h"

#include <utility>

namespace tavrel {

ObjectWillChange::Subscription::Subscription(Subscription&& other) noexcept
    : signal_(std::exchange(other.signal_, nullptr)), key_(other.key_) {}

ObjectWillChange::Subscription& ObjectWillChange::Subscription::operator=(
    Subscription&& other) noexcept {
    if (this != &other) {
        end();
        signal_ = std::exchange(other.signal_, nullptr);
        key_ = other.key_;
    }
    return *this;
}

ObjectWillChange::Subscription::~Subscription() {
    end();
}

void ObjectWillChange::Subscription::end() {
    if (signal_ != nullptr) {
        signal_->observers_.erase(key_);
        signal_ = nullptr;
    }
}

ObjectWillChange::Subscription ObjectWillChange::subscribe(std::function<void()> observer) {
    const std::uint64_t key = nextKey_++;
    observers_.emplace(key, std::move(observer));
    return {*this, key};
}

void ObjectWillChange::send() const {
    // An observer may unsubscribe itself or another while it is called.
    const auto observers = observers_;
    for (const auto& [key, observer] : observers) {
        if (observers_.contains(key)) {
            observer();
        }
    }
}

}  // namespace tavrel
