#include "platform/dbus/DBusLid.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/dbus/Bus.h"

namespace tavrel {

namespace dbus {

namespace {

constexpr std::chrono::seconds questionInterval{2};
/// How often a service that tells of changes is asked all the same: one that hangs tells of none.
constexpr std::chrono::seconds reassuranceInterval{30};
constexpr std::chrono::seconds answerTimeout{5};

std::uint64_t microseconds(std::chrono::microseconds duration) {
    return static_cast<std::uint64_t>(duration.count());
}

}  // namespace

/// One connection to a message bus, over which the power services are asked about the lid.
///
/// UPower's word counts; while it gives none, the session manager's does. UPower tells of each
/// change. The session manager does not (its documentation marks the property so), and is
/// therefore asked again every two seconds as long as there is only its word. Neither is
/// started for this.
///
/// For one thread. Nothing here blocks, whatever the bus and the services do.
class LidConversation {
public:
    /// `address` as the bus libraries write it.
    explicit LidConversation(const std::string& address);
    LidConversation(const LidConversation&) = delete;
    LidConversation& operator=(const LidConversation&) = delete;

    /// Handles what has arrived and sends what is due. Returns false when there is no such bus
    /// or the connection has ended; then it is over for good.
    bool serve();

    /// What to poll for, and until when, before `serve` has something to do.
    Wait nextWait() const;

    /// The word of the services so far: false when neither has said that it is closed.
    bool isClosed() const;

private:
    using Clock = std::chrono::steady_clock;

    struct Service {
        const char* name;
        const char* object;
        const char* interface;
        const char* property;
    };
    static constexpr std::size_t upower = 0;
    static constexpr std::size_t login = 1;
    static const std::array<Service, 2> services;

    /// A service's word, and what the bus library hands back with its answer.
    struct Word {
        LidConversation* conversation = nullptr;
        std::optional<bool> isClosed = std::nullopt;
    };

    void listen();
    void ask();
    void planNextQuestion();
    void askOne(std::size_t service);

    static int answered(sd_bus_message* message, void* word, sd_bus_error* error);
    static int changed(sd_bus_message* message, void* conversation, sd_bus_error* error);

    std::array<Word, 2> words_;
    Clock::time_point nextQuestion_ = Clock::now();
    Bus bus_;
};

const std::array<LidConversation::Service, 2> LidConversation::services{
    {{"org.freedesktop.UPower", "/org/freedesktop/UPower", "org.freedesktop.UPower", "LidIsClosed"},
     {"org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
      "LidClosed"}}};

LidConversation::LidConversation(const std::string& address)
    : words_{Word{.conversation = this}, Word{.conversation = this}}, bus_(openBus(address)) {
    if (bus_ != nullptr) {
        listen();
    }
}

void LidConversation::listen() {
    for (const Service& each : services) {
        const std::string service = each.name;
        const std::string says = "type='signal',sender='" + service + "',path='" + each.object +
                                 "',interface='org.freedesktop.DBus.Properties',"
                                 "member='PropertiesChanged'";
        for (const std::string& match : {ownerChanges(service), says}) {
            addMatch(*bus_, match, &changed, this);
        }
    }
}

bool LidConversation::serve() {
    if (bus_ == nullptr) {
        return false;
    }
    if (Clock::now() >= nextQuestion_) {
        ask();
    }
    return process(*bus_);
}

Wait LidConversation::nextWait() const {
    return dbus::nextWait(*bus_, nextQuestion_);
}

bool LidConversation::isClosed() const {
    return words_[upower].isClosed.value_or(words_[login].isClosed.value_or(false));
}

void LidConversation::ask() {
    planNextQuestion();
    askOne(upower);
    askOne(login);
}

void LidConversation::askOne(std::size_t service) {
    const Service& asked = services[service];
    const Message question =
        newCallToRunning(*bus_, asked.name, asked.object, "org.freedesktop.DBus.Properties", "Get");
    if (question == nullptr) {
        return;
    }
    sd_bus_message_append(question.get(), "ss", asked.interface, asked.property);
    sd_bus_call_async(bus_.get(), nullptr, question.get(), &answered, &words_[service],
                      microseconds(answerTimeout));
}

int LidConversation::answered(sd_bus_message* message, void* word, sd_bus_error* /*error*/) {
    auto& self = *static_cast<Word*>(word);
    int isClosed = 0;
    const bool isAnswer = sd_bus_message_is_method_error(message, nullptr) <= 0 &&
                          sd_bus_message_read(message, "v", "b", &isClosed) >= 0;
    self.isClosed = isAnswer ? std::optional(isClosed != 0) : std::nullopt;
    self.conversation->planNextQuestion();
    return 0;
}

void LidConversation::planNextQuestion() {
    const bool isToldOfChanges = words_[upower].isClosed.has_value();
    nextQuestion_ = Clock::now() + (isToldOfChanges ? reassuranceInterval : questionInterval);
}

int LidConversation::changed(sd_bus_message* /*message*/, void* conversation,
                             sd_bus_error* /*error*/) {
    static_cast<LidConversation*>(conversation)->nextQuestion_ = Clock::now();
    return 0;
}

}  // namespace dbus

DBusLid::DBusLid(const std::optional<std::string>& busAddress)
    : thread_(
          [address = busAddress.value_or(dbus::systemBusAddress())] {
              return std::make_unique<dbus::LidConversation>(address);
          },
          [this](const dbus::LidConversation* conversation) {
              setClosed(conversation != nullptr && conversation->isClosed());
          }) {}

DBusLid::~DBusLid() = default;

void DBusLid::observe(std::function<void()> changed) {
    const std::lock_guard lock(mutex_);
    changed_ = std::move(changed);
}

void DBusLid::setClosed(bool isClosed) {
    if (isClosed_.exchange(isClosed) == isClosed) {
        return;
    }
    const std::lock_guard lock(mutex_);
    // A copy, since it may end itself.
    if (const auto changed = changed_) {
        changed();
    }
}

}  // namespace tavrel
