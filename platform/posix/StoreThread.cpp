#include "platform/posix/StoreThread.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace tavrel {
namespace {

/// Keeps signals from threads that are started in its lifetime. A thread that hangs in the file
/// system handles none in time; and a write beyond a limit of the file's size is then refused
/// like any other, without the signal that would end the process.
class SignalsHeldBack {
public:
    SignalsHeldBack() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsHeldBack() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;

private:
    sigset_t before_{};
};

}  // namespace

StoreThread::StoreThread(std::unique_ptr<BlockingUserDefaults> store, StoreThreadOptions options)
    : store_(std::move(store)), options_(std::move(options)) {}

std::thread StoreThread::start() {
    looksWanted_ = 1;
    const SignalsHeldBack held;
    return std::thread([self = shared_from_this()] { self->run(); });
}

bool StoreThread::end() {
    Lock lock(mutex_);
    isEnding_ = true;
    changed_.notify_all();
    return waitUntil(lock, [&] { return hasEnded_; });
}

StoreThread::Value StoreThread::lastKnown(std::string_view key) {
    Lock lock(mutex_);
    if (Clock::now() - lookedAt_ >= options_.lookInterval) {
        ++looksWanted_;
        changed_.notify_all();
    }
    waitUntil(lock, [&] { return looksDone_ > 0; });
    return valueOf(key);
}

void StoreThread::lookNow() {
    Lock lock(mutex_);
    const std::uint64_t wanted = ++looksWanted_;
    changed_.notify_all();
    waitUntil(lock, [&] { return looksDone_ >= wanted; });
}

std::pair<StoreThread::Value, bool> StoreThread::inMemory(std::string_view key) {
    const Lock lock(mutex_);
    return {valueOf(key), unsaved_.contains(key)};
}

StoreThread::Write::State StoreThread::write(std::string_view key, std::string_view bytes,
                                             std::optional<Value> expected) {
    Lock lock(mutex_);
    const auto write = std::make_shared<Write>(
        Write{.bytes = std::string(bytes), .expected = std::move(expected)});
    unsaved_.insert_or_assign(std::string(key), write);
    changed_.notify_all();
    if (!waitUntil(lock, [&] { return write->state != Write::State::waiting; })) {
        // Nobody is left to be told that it was overtaken.
        write->expected.reset();
        return Write::State::kept;
    }
    return write->state;
}

void StoreThread::writeSoon(std::string_view key, std::string_view bytes) {
    const Lock lock(mutex_);
    unsaved_.insert_or_assign(
        std::string(key),
        std::make_shared<Write>(Write{.bytes = std::string(bytes), .expected = std::nullopt}));
    changed_.notify_all();
}

void StoreThread::awaitWrites() {
    Lock lock(mutex_);
    waitUntil(lock, [&] { return !isWriteNew(); });
}

void StoreThread::run() {
    Lock lock(mutex_);
    for (;;) {
        if (unsaved_.empty()) {
            changed_.wait(lock, [&] { return hasWork(); });
        } else {
            changed_.wait_until(lock, retryAt_, [&] { return hasWork(); });
        }
        // In this order: what is written first is then read.
        if (isWriteDue()) {
            writeUnsaved(lock);
        }
        if (isEnding_) {
            break;
        }
        if (looksWanted_ > looksDone_) {
            look(lock);
        }
        changed_.notify_all();
    }
    hasEnded_ = true;
    changed_.notify_all();
}

bool StoreThread::hasWork() const {
    return isEnding_ || looksWanted_ > looksDone_ || isWriteDue();
}

bool StoreThread::isWriteNew() const {
    return std::any_of(unsaved_.begin(), unsaved_.end(), [](const auto& each) {
        return each.second->state == Write::State::waiting;
    });
}

bool StoreThread::isWriteDue() const {
    return isWriteNew() || (!unsaved_.empty() && (isEnding_ || Clock::now() >= retryAt_));
}

void StoreThread::writeUnsaved(Lock& lock) {
    const auto unsaved = unsaved_;
    for (const auto& [key, write] : unsaved) {
        const std::optional<Value> expected = write->expected;
        const std::string& bytes = write->bytes;
        std::optional<Value> found;
        const UserDefaults::Change change = [&](const Value& present) {
            if (expected && present != *expected) {
                found = present;
                return Value();
            }
            return Value(bytes);
        };
        bool isAccepted = false;
        busyWith(lock, [&, &name = key] { isAccepted = store_->update(name, change); });
        settle(key, *write, isAccepted, found);
        if (!isAccepted) {
            sayUnwritable(lock);
        }
    }
}

/// `found` is what the store held where that was not what was expected.
void StoreThread::settle(const std::string& key, Write& write, bool isAccepted,
                         const std::optional<Value>& found) {
    if (!isAccepted) {
        write.state = Write::State::kept;
        write.expected.reset();
        retryAt_ = Clock::now() + options_.retryInterval;
        return;
    }
    isOverdue_ = false;
    if (found && !write.expected) {
        // Its writer has gone meanwhile: it is written at the next turn, whatever is there.
        return;
    }
    write.state = found ? Write::State::overtaken : Write::State::stored;
    const Value present = found.value_or(write.bytes);
    if (present) {
        texts_.insert_or_assign(key, *present);
    } else {
        texts_.erase(key);
    }
    const auto entry = unsaved_.find(key);
    if (entry != unsaved_.end() && entry->second.get() == &write) {
        unsaved_.erase(entry);
    }
}

void StoreThread::look(Lock& lock) {
    const std::uint64_t wanted = looksWanted_;
    lookedAt_ = Clock::now();
    std::optional<BlockingUserDefaults::Texts> read;
    busyWith(lock, [&] { read = store_->all(); });
    if (read) {
        texts_ = std::move(*read);
    }
    looksDone_ = wanted;
    isOverdue_ = isOverdue_ && !unsaved_.empty();
}

void StoreThread::busyWith(Lock& lock, const std::function<void()>& call) {
    busySince_ = Clock::now();
    lock.unlock();
    call();
    lock.lock();
    busySince_.reset();
}

bool StoreThread::waitUntil(Lock& lock, const std::function<bool()>& condition) {
    if (isHanging()) {
        return condition();
    }
    const bool held = changed_.wait_until(lock, Clock::now() + options_.timeout, condition);
    isOverdue_ = isOverdue_ || !held;
    return held;
}

bool StoreThread::isHanging() const {
    return isOverdue_ || (busySince_ && Clock::now() - *busySince_ >= options_.timeout);
}

void StoreThread::sayUnwritable(Lock& lock) {
    if (!std::exchange(hasSaidUnwritable_, true)) {
        lock.unlock();
        options_.onUnwritable();
        lock.lock();
    }
}

StoreThread::Value StoreThread::valueOf(std::string_view key) const {
    if (const auto found = unsaved_.find(key); found != unsaved_.end()) {
        return found->second->bytes;
    }
    const auto found = texts_.find(key);
    return found == texts_.end() ? std::nullopt : Value(found->second);
}

}  // namespace tavrel
