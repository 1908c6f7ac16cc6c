#include "platform/dbus/DBusApplication.h"

#include <utility>

namespace tavrel {

using dbus::ApplicationConversation;

DBusApplication::DBusApplication(const std::string& address, const dbus::ApplicationNames& names,
                                 const ApplicationConversation::Invitation& invitation,
                                 Timeouts timeouts)
    : timeouts_(timeouts),
      thread_(
          [this, address, names, invitation] {
              return std::make_unique<ApplicationConversation>(address, names, invitation,
                                                               callbacks(), numbers_);
          },
          [this](ApplicationConversation* conversation) { sendAnswers(conversation); }) {}

DBusApplication::~DBusApplication() {
    const std::lock_guard lock(serving_);
    serve_ = [](const Call&) {};
}

ApplicationConversation::Callbacks DBusApplication::callbacks() {
    return {.isFirst = [this] { turn(State::first); },
            .isSecond =
                [this] {
                    turn(State::asking);
                    const std::lock_guard lock(mutex_);
                    return state_ == State::asking;
                },
            .otherAnswered = [this] { turn(State::second); },
            .called = [this](Call call) { take(std::move(call)); }};
}

DBusApplication::Standing DBusApplication::awaitStanding() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, timeouts_.bus, [this] { return state_ != State::unknown; });
    if (state_ == State::asking) {
        changed_.wait_for(lock, timeouts_.other, [this] { return state_ != State::asking; });
    }
    switch (std::exchange(state_, State::decided)) {
        case State::first:
            return Standing::first;
        case State::second:
            return Standing::second;
        default:
            return Standing::unsettled;
    }
}

void DBusApplication::turn(State state) {
    const std::lock_guard lock(mutex_);
    if (state_ != State::decided) {
        state_ = state;
        changed_.notify_all();
    }
}

void DBusApplication::serve(std::function<void(const Call&)> serve) {
    const std::lock_guard lock(serving_);
    serve_ = std::move(serve);
    for (const Call& call : std::exchange(waiting_, {})) {
        serve_(call);
    }
}

void DBusApplication::take(Call call) {
    const std::lock_guard lock(serving_);
    if (serve_ != nullptr) {
        serve_(call);
        return;
    }
    if (std::chrono::steady_clock::now() < started_ + timeouts_.start) {
        answered(call);
    }
    waiting_.push_back(std::move(call));
}

void DBusApplication::answered(const Call& call) {
    {
        const std::lock_guard lock(mutex_);
        answers_.push_back(call.number);
    }
    thread_.wake();
}

void DBusApplication::sendAnswers(ApplicationConversation* conversation) {
    if (conversation == nullptr) {
        turn(State::gone);
    }
    std::vector<std::uint64_t> answers;
    {
        const std::lock_guard lock(mutex_);
        answers.swap(answers_);
    }
    for (const std::uint64_t number : answers) {
        if (conversation != nullptr) {
            conversation->answer(number);
        }
    }
}

}  // namespace tavrel
