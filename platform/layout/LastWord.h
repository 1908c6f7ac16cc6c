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

#include "platform/MonotonicClock.h"

namespace tavrel::layout {

/// How those ask who ask in step, and how they are answered.
struct Step {
    /// From one of their questions to the next.
    std::chrono::milliseconds interval{1000};
    /// How long before the next one is due the server is asked.
    std::chrono::milliseconds headStart{50};
    /// How old an answer may be by then, and for whoever asks how it was lately.
    std::chrono::milliseconds freshness{250};
};

/// What a window server says of its displays, and what it said last while it says nothing. It is
/// asked on a thread with a connection of its own, so that nobody has to wait for a slow one.
///
/// Thread-safe. `Word` is what one window server says at one moment.
template <typename Word>
class LastWord {
public:
    /// How long whoever asks is kept waiting. Then the server is silent, and until it speaks again
    /// nobody is kept waiting at all.
    static constexpr std::chrono::milliseconds questionTimeout{3000};

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
    /// there is time. All times are on the clock `now`.
    LastWord(MakeAsk makeAsk, std::chrono::milliseconds timeout, const Step& step = {},
             MonotonicClock now = steadyTime)
        : state_(std::make_shared<State>(std::move(makeAsk), timeout, step, std::move(now))) {}

    /// Blocks at most for the question timeout; a thread that still waits for a silent server is
    /// left behind.
    ~LastWord() {
        std::unique_lock lock(state_->mutex);
        state_->isStopping = true;
        state_->changed.notify_all();
        waitUntil(state_->changed, lock, state_->now, state_->now() + questionTimeout,
                  [this] { return !state_->isRunning; });
    }
    LastWord(const LastWord&) = delete;
    LastWord& operator=(const LastWord&) = delete;

    /// Returns what the server says now. Blocks at most for the question timeout, or for `timeout`
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
            limit = std::min(limit, questionTimeout);
            const bool isSilent =
                state.looking > state.answered && state.now() - state.lookingSince >= limit;
            limit = isSilent ? std::chrono::milliseconds::zero() : limit;
        }
        const bool isAnswered = waitUntil(state.changed, lock, state.now, state.now() + limit,
                                          [&] { return state.answered >= question; });
        Answer answer = state.last;
        answer.isFresh = answer.isFresh && isAnswered;
        return answer;
    }

    /// As `ask`, but a word that the server said a moment ago is answer enough.
    Answer askLately() {
        {
            const std::lock_guard lock(state_->mutex);
            if (state_->last.word != nullptr && isRecent(*state_, state_->now())) {
                return state_->last;
            }
        }
        return ask(false);
    }

    /// As `ask`, for somebody who asks once an interval, and whom what the server said a moment ago
    /// will do. The server is asked ahead, shortly before the next such question is due, so that
    /// nobody waits for it. When that question does not come, it is not asked ahead again.
    Answer askInStep() {
        {
            State& state = *state_;
            const std::lock_guard lock(state.mutex);
            const std::chrono::nanoseconds now = state.now();
            state.isInStep = true;
            if (isRecent(state, now)) {
                state.isLate = false;
                return state.last;
            }
            // Who is late once, on a busy machine, will be in time again.
            const bool isLate =
                state.nextLook.has_value() && *state.nextLook - now > state.step.interval / 2;
            if (!isLate || state.isLate) {
                state.nextLook = now + state.step.interval - state.step.headStart;
            }
            state.isLate = isLate && !state.isLate;
        }
        return ask(false);
    }

private:
    struct State {
        State(MakeAsk make, std::chrono::milliseconds limit, const Step& rhythm,
              MonotonicClock clock)
            : makeAsk(std::move(make)), timeout(limit), step(rhythm), now(std::move(clock)) {}

        const MakeAsk makeAsk;
        const std::chrono::milliseconds timeout;
        const Step step;
        const MonotonicClock now;

        std::mutex mutex;
        std::condition_variable changed;
        bool isRunning = false;
        bool isStopping = false;
        /// Questions are numbered; one is answered by a look that began after it was put.
        std::uint64_t asked = 0;
        std::uint64_t looking = 0;
        std::uint64_t answered = 0;
        std::chrono::nanoseconds lookingSince{0};
        bool wantsProbe = false;
        Answer last;
        /// When the look began that brought it.
        std::optional<std::chrono::nanoseconds> answeredAsOf;
        /// When to look unasked.
        std::optional<std::chrono::nanoseconds> nextLook;
        /// Whether somebody has asked in step since the server was last asked for them.
        bool isInStep = false;
        /// Whether their last question was late, for the first time.
        bool isLate = false;
    };

    /// With the lock held: whether the last answer is no older than those in step may be.
    static bool isRecent(const State& state, std::chrono::nanoseconds now) {
        return state.last.isFresh && state.answeredAsOf.has_value() &&
               now - *state.answeredAsOf < state.step.freshness;
    }

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

    /// Blocks until somebody asks, or will.
    static void awaitQuestion(State& state, std::unique_lock<std::mutex>& lock) {
        const auto isAsked = [&] { return state.isStopping || state.asked > state.answered; };
        while (state.nextLook.has_value()) {
            if (waitUntil(state.changed, lock, state.now, *state.nextLook, isAsked)) {
                return;
            }
            if (!std::exchange(state.isInStep, false)) {
                state.nextLook.reset();
                break;
            }
            *state.nextLook += state.step.interval;
            ++state.asked;
        }
        state.changed.wait(lock, isAsked);
    }

    static void serve(State& state) {
        Ask askServer = state.makeAsk();
        std::unique_lock lock(state.mutex);
        for (;;) {
            awaitQuestion(state, lock);
            if (state.isStopping) {
                break;
            }
            state.looking = state.asked;
            state.lookingSince = state.now();
            const bool isToProbe = std::exchange(state.wantsProbe, false);
            lock.unlock();
            std::optional<Answer> answer = askServer(isToProbe);
            lock.lock();
            state.last.isFresh = answer.has_value();
            if (answer.has_value()) {
                state.last = *std::move(answer);
                state.answeredAsOf = state.lookingSince;
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
