#include "platform/x11/snapshot/LastWord.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/x11/connection/ServerLink.h"

namespace tavrel::x11 {

namespace {

using std::chrono::steady_clock;

/// std::nullopt when the server is silent.
std::optional<LastWord::Answer> read(ServerLink& link, Probing probing) {
    using Server = LastWord::Server;
    Connection* connection = link.connection();
    if (connection == nullptr) {
        return link.isKnownToBeGone() ? std::optional<LastWord::Answer>(LastWord::Answer{})
                                      : std::nullopt;
    }
    if (!connection->hasRandr()) {
        return LastWord::Answer{.server = Server::withoutRandr};
    }
    connection->discardEvents();
    if (auto snapshot = readSnapshot(*connection, probing)) {
        return LastWord::Answer{.server = Server::present,
                                .snapshot = std::make_shared<const Snapshot>(*std::move(snapshot))};
    }
    const bool isGone = connection->isLost() && !connection->hasTimedOut();
    return isGone ? std::optional<LastWord::Answer>(LastWord::Answer{}) : std::nullopt;
}

}  // namespace

struct LastWord::State {
    explicit State(X11ServerOptions serverOptions) : options(std::move(serverOptions)) {}

    const X11ServerOptions options;

    std::mutex mutex;
    std::condition_variable changed;
    bool isRunning = false;
    bool isStopping = false;
    /// Questions are numbered; one is answered by a look that began after it was put.
    std::uint64_t asked = 0;
    std::uint64_t looking = 0;
    std::uint64_t answered = 0;
    steady_clock::time_point lookingSince;
    bool wantsProbe = false;
    Answer last;
};

LastWord::LastWord(X11ServerOptions options)
    : state_(std::make_shared<State>(std::move(options))) {}

LastWord::~LastWord() {
    std::unique_lock lock(state_->mutex);
    state_->isStopping = true;
    state_->changed.notify_all();
    state_->changed.wait_for(lock, patience, [this] { return !state_->isRunning; });
}

LastWord::Answer LastWord::ask(Probing probing) {
    State& state = *state_;
    std::unique_lock lock(state.mutex);
    if (!state.isRunning) {
        try {
            std::thread([shared = state_] { serve(*shared); }).detach();
        } catch (const std::system_error&) {
            return state.last;
        }
        state.isRunning = true;
    }
    const std::uint64_t question = ++state.asked;
    state.wantsProbe = state.wantsProbe || probing == Probing::always;
    state.changed.notify_all();

    auto limit = state.options.timeout;
    if (probing != Probing::always) {
        limit = std::min(limit, patience);
        const bool isSilent =
            state.looking > state.answered && steady_clock::now() - state.lookingSince >= limit;
        limit = isSilent ? std::chrono::milliseconds::zero() : limit;
    }
    const bool isAnswered =
        state.changed.wait_for(lock, limit, [&] { return state.answered >= question; });
    Answer answer = state.last;
    answer.isFresh = answer.isFresh && isAnswered;
    return answer;
}

void LastWord::serve(State& state) {
    std::optional<ServerLink> link(state.options);
    std::unique_lock lock(state.mutex);
    for (;;) {
        state.changed.wait(lock, [&] { return state.isStopping || state.asked > state.answered; });
        if (state.isStopping) {
            break;
        }
        state.looking = state.asked;
        state.lookingSince = steady_clock::now();
        const Probing probing =
            std::exchange(state.wantsProbe, false) ? Probing::always : Probing::never;
        lock.unlock();
        std::optional<Answer> answer = read(*link, probing);
        lock.lock();
        state.last.isFresh = answer.has_value();
        if (answer.has_value()) {
            state.last = *std::move(answer);
        }
        state.answered = state.looking;
        state.changed.notify_all();
    }
    lock.unlock();
    link.reset();
    lock.lock();
    state.isRunning = false;
    state.changed.notify_all();
}

}  // namespace tavrel::x11
