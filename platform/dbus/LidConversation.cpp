#include "platform/dbus/LidConversation.h"

#include <algorithm>
#include <cstdint>

namespace tavrel::dbus {

namespace {

constexpr std::chrono::seconds questionInterval{2};
/// Between questions to a service that tells of changes: in case that it hangs.
constexpr std::chrono::seconds reassuranceInterval{30};
constexpr std::chrono::seconds answerTimeout{5};

struct Unref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};

std::uint64_t microseconds(std::chrono::microseconds duration) {
    return static_cast<std::uint64_t>(duration.count());
}

/// Without it, the library ends the connection when the bus refuses to pass a signal on.
int carryOn(sd_bus_message* /*message*/, void* /*unused*/, sd_bus_error* /*error*/) {
    return 0;
}

}  // namespace

const std::array<LidConversation::Service, 2> LidConversation::services{
    {{"org.freedesktop.UPower", "/org/freedesktop/UPower", "org.freedesktop.UPower", "LidIsClosed"},
     {"org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
      "LidClosed"}}};

LidConversation::LidConversation(const std::optional<std::string>& address)
    : words_{Word{.conversation = this}, Word{.conversation = this}} {
    isOver_ = !open(address);
    if (!isOver_) {
        listen();
    }
}

bool LidConversation::open(const std::optional<std::string>& address) {
    sd_bus* bus = nullptr;
    if (!address.has_value()) {
        const bool isOpen = sd_bus_open_system(&bus) >= 0;
        bus_.reset(bus);
        return isOpen;
    }
    if (sd_bus_new(&bus) < 0) {
        return false;
    }
    bus_.reset(bus);
    return sd_bus_set_address(bus, address->c_str()) >= 0 && sd_bus_set_bus_client(bus, 1) >= 0 &&
           sd_bus_start(bus) >= 0;
}

void LidConversation::listen() {
    for (const Service& each : services) {
        const std::string service = each.name;
        const std::string appearsOrGoes =
            "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
            "member='NameOwnerChanged',arg0='" +
            service + "'";
        const std::string says = "type='signal',sender='" + service + "',path='" + each.object +
                                 "',interface='org.freedesktop.DBus.Properties',"
                                 "member='PropertiesChanged'";
        for (const std::string& match : {appearsOrGoes, says}) {
            sd_bus_add_match_async(bus_.get(), nullptr, match.c_str(), &changed, &carryOn, this);
        }
    }
}

bool LidConversation::serve() {
    while (!isOver_) {
        if (Clock::now() >= nextQuestion_) {
            ask();
        }
        const int handled = sd_bus_process(bus_.get(), nullptr);
        isOver_ = handled < 0;
        if (handled == 0) {
            break;
        }
    }
    return !isOver_;
}

LidConversation::Wait LidConversation::nextWait() const {
    using std::chrono::milliseconds;
    auto until = nextQuestion_;
    std::uint64_t libraryWants = UINT64_MAX;
    if (sd_bus_get_timeout(bus_.get(), &libraryWants) > 0 && libraryWants != UINT64_MAX) {
        // The library counts on the clock that steady_clock is here.
        until = std::min(
            until,
            Clock::time_point(std::chrono::microseconds(static_cast<std::int64_t>(libraryWants))));
    }
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    const int events = sd_bus_get_events(bus_.get());
    return {.descriptor = sd_bus_get_fd(bus_.get()),
            .events = static_cast<short>(std::max(events, 0)),
            .timeout = std::max(left, milliseconds(0))};
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
    sd_bus_message* message = nullptr;
    if (sd_bus_message_new_method_call(bus_.get(), &message, asked.name, asked.object,
                                       "org.freedesktop.DBus.Properties", "Get") < 0) {
        return;
    }
    const std::unique_ptr<sd_bus_message, Unref> question(message);
    sd_bus_message_set_auto_start(message, 0);
    sd_bus_message_append(message, "ss", asked.interface, asked.property);
    sd_bus_call_async(bus_.get(), nullptr, message, &answered, &words_[service],
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

}  // namespace tavrel::dbus
