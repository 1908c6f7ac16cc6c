#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/posix/BlockingUserDefaults.h"

namespace tavrel {

/// How long others wait for a store, and what happens when it cannot be written.
struct StoreThreadOptions {
    /// How long a caller waits at most. A store that has kept one waiting for so long keeps
    /// nobody waiting until it has answered. Shorter than others wait for a watchdog that waits
    /// for its store.
    std::chrono::milliseconds timeout{1000};
    /// How old what is known of the store may be before somebody who does not wait has it looked at
    /// again.
    std::chrono::milliseconds lookInterval{4500};
    /// How long after a refused write the next attempt comes.
    std::chrono::milliseconds retryInterval{1000};
    /// Called at most once, on the thread that writes: a write was refused.
    std::function<void()> onUnwritable = [] {};
};

/// What a store holds and what is still to be written to it, in memory, and what the one thread
/// does that reads and writes the store. Thread-safe.
///
/// That thread shares in owning it, since it may be inside a call that never returns.
class StoreThread : public std::enable_shared_from_this<StoreThread> {
public:
    using Value = std::optional<std::string>;

    /// A value on its way to the store.
    struct Write {
        enum class State {
            waiting,
            stored,
            /// Still to be written; the system refused, or takes too long.
            kept,
            /// Not written, and not to be: the store held something else than was expected.
            overtaken,
        };

        const std::string bytes;
        /// What the store is expected to hold; std::nullopt when that does not matter.
        std::optional<Value> expected;
        State state = State::waiting;
    };

    StoreThread(std::unique_ptr<BlockingUserDefaults> store, StoreThreadOptions options);

    /// Starts the thread, which reads the store at once. To be called once.
    std::thread start();

    /// Has what is unsaved tried once more and asks the thread to end. Returns whether it does
    /// in time; otherwise it ends when the store lets go of it.
    bool end();

    /// The value under `key` as this process knows it; blocks only while the store has never
    /// been read, and then only until the timeout. Has the store looked at if that was
    /// a while ago, so that a later call knows what others wrote.
    Value lastKnown(std::string_view key);

    /// Blocks until the store has been looked at, or the timeout has passed.
    void lookNow();

    /// The value in memory, and whether it is unsaved.
    std::pair<Value, bool> inMemory(std::string_view key);

    /// Replaces the value in memory and has it written; blocks until it has been, cannot be, or
    /// the timeout has passed. With `expected`, only if the store holds that: otherwise memory
    /// has what the store holds, and the outcome is `overtaken`.
    ///
    /// REQUIRES: no other call of this at the same time; the store can hold the value.
    Write::State write(std::string_view key, std::string_view bytes, std::optional<Value> expected);

    /// The same, but doesn't wait.
    void writeSoon(std::string_view key, std::string_view bytes);

    /// Blocks until no write is on its way, or the timeout has passed.
    void awaitWrites();

    bool canHold(std::string_view key, std::string_view bytes) const {
        return store_->canHold(key, bytes);
    }

private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;

    void run();
    bool hasWork() const;
    bool isWriteNew() const;
    bool isWriteDue() const;
    void writeUnsaved(Lock& lock);
    void settle(const std::string& key, Write& write, bool isAccepted, const std::optional<Value>&);
    void look(Lock& lock);
    /// Calls the store without the lock.
    void busyWith(Lock& lock, const std::function<void()>& call);
    /// Returns whether the condition held in time.
    bool waitUntil(Lock& lock, const std::function<bool()>& condition);
    bool isHanging() const;
    void sayUnwritable(Lock& lock);
    Value valueOf(std::string_view key) const;

    const std::unique_ptr<BlockingUserDefaults> store_;
    const StoreThreadOptions options_;

    std::mutex mutex_;
    std::condition_variable changed_;
    /// As the store was when it was last read or written.
    BlockingUserDefaults::Texts texts_;
    std::map<std::string, std::shared_ptr<Write>, std::less<>> unsaved_;
    Clock::time_point retryAt_;
    /// When the last look began.
    Clock::time_point lookedAt_;
    std::uint64_t looksWanted_ = 0;
    std::uint64_t looksDone_ = 0;
    /// Since when the thread has been inside a call to the store.
    std::optional<Clock::time_point> busySince_;
    /// Somebody has waited for the timeout, and the store has not answered since.
    bool isOverdue_ = false;
    bool hasSaidUnwritable_ = false;
    bool isEnding_ = false;
    bool hasEnded_ = false;
};

}  // namespace tavrel
