#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace tavrel::layout {

/// What a window server says of its displays, and what it said last while it says nothing. It is
/// asked on a thread with a connection of its own, so that nobody has to wait for a slow one.
///
/// Thread-safe. `Word` is what one window server says at one moment.
template <typename Word>
class LastWord {
public:
    /// How long whoever asks is kept waiting. Then the server is silent, and until it speaks again
    /// nobody is kept waiting at all.
    static constexpr std::chrono::milliseconds patience{3000};

    struct Answer {
        /// Null when the server can't be reached, has gone, or hasn't said anything yet.
        std::shared_ptr<const Word> word = nullptr;
        /// Whether it is as of now, and not what was said before the server fell silent.
        bool isFresh = true;
    };

    /// Asks the server, after it has looked for monitors anew if so told. std::nullopt when it
    /// is silent; an answer without a word when it is known to be gone.
    using Ask = std::function<std::optional<Answer>(bool isToProbe)>;
    /// Called once, on the thread that asks. What it returns is used and destroyed there.
    using MakeAsk = std::function<Ask()>;

    /// Does nothing before the first question. `timeout` is how long the server may take when
    /// there is time.
    LastWord(MakeAsk makeAsk, std::chrono::milliseconds timeout)
        : state_(std::make_shared<State>(std::move(makeAsk), timeout)) {}

    /// Blocks at most for the patience; a thread that still waits for a silent server is left
    /// behind.
    ~LastWord() {
        std::unique_lock lock(state_->mutex);
        state_->isStopping = true;
        state_->changed.notify_all();
        state_->changed.wait_for(lock, patience, [this] { return !state_->isRunning; });
    }
    LastWord(const LastWord&) = delete;
    LastWord& operator=(const LastWord&) = delete;

    /// Returns what the server says now. Blocks at most for the patience, or for the timeout
    /// where that is shorter; when it is to look for monitors anew, which takes its time, always
    /// for the timeout. A server that is silent for longer, but isn't known to be gone, is
    /// answered for by what it said last.
    Answer ask(bool isToProbe) {
        State& state = *state_;
        std::unique_lock lock(state.mutex);
        if (!start(state)) {
            return state.last;
        }
        const std::uint64_t question = ++state.asked;
        state.wantsProbe = state.wantsProbe || isToProbe;
        state.changed.notify_all();

        auto limit = state.timeout;
        if (!isToProbe) {
            limit = std::min(limit, patience);
            const bool isSilent =
                state.looking > state.answered && Clock::now() - state.lookingSince >= limit;
            limit = isSilent ? std::chrono::milliseconds::zero() : limit;
        }
        const bool isAnswered =
            state.changed.wait_for(lock, limit, [&] { return state.answered >= question; });
        Answer answer = state.last;
        answer.isFresh = answer.isFresh && isAnswered;
        return answer;
    }

private:
    using Clock = std::chrono::steady_clock;

    struct State {
        State(MakeAsk make, std::chrono::milliseconds limit)
            : makeAsk(std::move(make)), timeout(limit) {}

        const MakeAsk makeAsk;
        const std::chrono::milliseconds timeout;

        std::mutex mutex;
        std::condition_variable changed;
        bool isRunning = false;
        bool isStopping = false;
        /// Questions are numbered; one is answered by a look that began after it was put.
        std::uint64_t asked = 0;
        std::uint64_t looking = 0;
        std::uint64_t answered = 0;
        Clock::time_point lookingSince;
        bool wantsProbe = false;
        Answer last;
    };

    /// With the lock held. Returns false when no thread can be started.
    bool start(State& state) {
        if (!state.isRunning) {
            try {
                std::thread([shared = state_] { serve(*shared); }).detach();
            } catch (const std::system_error&) {
                return false;
            }
            state.isRunning = true;
        }
        return true;
    }

    static void serve(State& state) {
        Ask askServer = state.makeAsk();
        std::unique_lock lock(state.mutex);
        for (;;) {
            state.changed.wait(lock,
                               [&] { return state.isStopping || state.asked > state.answered; });
            if (state.isStopping) {
                break;
            }
            state.looking = state.asked;
            state.lookingSince = Clock::now();
            const bool isToProbe = std::exchange(state.wantsProbe, false);
            lock.unlock();
            std::optional<Answer> answer = askServer(isToProbe);
            lock.lock();
            state.last.isFresh = answer.has_value();
            if (answer.has_value()) {
                state.last = *std::move(answer);
            }
            state.answered = state.looking;
            state.changed.notify_all();
        }
        lock.unlock();
        askServer = nullptr;
        lock.lock();
        state.isRunning = false;
        state.changed.notify_all();
    }

    std::shared_ptr<State> state_;
};

}  // namespace tavrel::layout
