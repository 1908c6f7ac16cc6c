#include "platform/dbus/LidConversation.h"

#include <cstdint>

namespace tavrel::dbus {

namespace {

constexpr std::chrono::seconds questionInterval{2};
/// Between questions to a service that tells of changes: in case that it hangs.
constexpr std::chrono::seconds reassuranceInterval{30};
constexpr std::chrono::seconds answerTimeout{5};

std::uint64_t microseconds(std::chrono::microseconds duration) {
    return static_cast<std::uint64_t>(duration.count());
}

}  // namespace

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
        newCall(*bus_, asked.name, asked.object, "org.freedesktop.DBus.Properties", "Get");
    if (question == nullptr) {
        return;
    }
    sd_bus_message_set_auto_start(question.get(), 0);
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

}  // namespace tavrel::dbus
