#include "platform/NotificationCenter.h"

#include <utility>

namespace tavrel {

ObserverToken NotificationCenter::addObserver(std::string_view name, std::function<void()> block) {
    const std::lock_guard lock(mutex_);
    const ObserverToken token{nextToken_++};
    observers_.emplace(token.value,
                       std::make_shared<Observer>(Observer{std::string(name), std::move(block)}));
    return token;
}

void NotificationCenter::removeObserver(ObserverToken token) {
    std::shared_ptr<Observer> removed;
    {
        const std::lock_guard lock(mutex_);
        auto node = observers_.extract(token.value);
        if (node.empty()) {
            return;
        }
        removed = std::move(node.mapped());
    }
    removed->block = nullptr;
}

void NotificationCenter::post(std::string_view name) {
    const std::lock_guard lock(mutex_);
    for (const auto& [token, observer] : observers_) {
        if (observer->name == name) {
            mainQueue_.async([posted = observer] {
                if (posted->block != nullptr) {
                    // The block may remove its own observer.
                    const auto block = posted->block;
                    block();
                }
            });
        }
    }
}

}  // namespace tavrel
