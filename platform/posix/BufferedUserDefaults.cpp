#include "platform/posix/BufferedUserDefaults.h"

#include <utility>

namespace tavrel {

using WriteState = StoreThread::Write::State;

BufferedUserDefaults::BufferedUserDefaults(std::unique_ptr<BlockingUserDefaults> store,
                                           Options options)
    : store_(std::make_shared<StoreThread>(std::move(store), std::move(options))),
      thread_(store_->start()) {}

BufferedUserDefaults::~BufferedUserDefaults() {
    if (store_->end()) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

std::optional<std::string> BufferedUserDefaults::data(std::string_view key) {
    store_->lookNow();
    return store_->inMemory(key).first;
}

bool BufferedUserDefaults::setData(std::string_view key, std::string_view bytes) {
    if (!store_->canHold(key, bytes)) {
        return false;
    }
    const std::lock_guard guard(changing_);
    store_->write(key, bytes, std::nullopt);
    return true;
}

bool BufferedUserDefaults::update(std::string_view key, const Change& change) {
    const std::lock_guard guard(changing_);
    bool isLookedAt = false;
    for (;;) {
        const auto [old, isUnsaved] = store_->inMemory(key);
        const std::optional<std::string> bytes = change(old);
        if (!bytes && isLookedAt) {
            return true;
        }
        if (!bytes) {
            // Whether others have written meanwhile shows when one writes, and only then.
            store_->lookNow();
            isLookedAt = true;
            continue;
        }
        if (!store_->canHold(key, *bytes)) {
            return false;
        }
        // What is unsaved is not what the store holds.
        std::optional<StoreThread::Value> expected;
        if (!isUnsaved) {
            expected.emplace(old);
        }
        if (store_->write(key, *bytes, expected) != WriteState::overtaken) {
            return true;
        }
    }
}

void BufferedUserDefaults::settle() {
    store_->awaitWrites();
}

std::optional<std::string> BufferedUserDefaults::FromMemory::data(std::string_view key) {
    return whole_.store_->lastKnown(key);
}

bool BufferedUserDefaults::FromMemory::setData(std::string_view key, std::string_view bytes) {
    if (!whole_.store_->canHold(key, bytes)) {
        return false;
    }
    const std::lock_guard guard(whole_.changing_);
    whole_.store_->writeSoon(key, bytes);
    return true;
}

bool BufferedUserDefaults::FromMemory::update(std::string_view key, const Change& change) {
    return whole_.update(key, change);
}

}  // namespace tavrel
