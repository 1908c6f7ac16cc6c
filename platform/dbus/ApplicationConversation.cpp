#include "platform/dbus/ApplicationConversation.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tavrel::dbus {

namespace {

constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr const char* tokenKey = "activation-token";
constexpr const char* startupKey = "desktop-startup-id";

/// What the bus answers to `RequestName`.
enum NameReply : std::uint32_t { primaryOwner = 1, alreadyOwner = 4 };

std::string objectOf(const std::string& id) {
    std::string path = "/" + id;
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

void append(sd_bus_message& message, const char* key, const std::string& value) {
    if (!value.empty()) {
        sd_bus_message_append(&message, "{sv}", key, "s", value.c_str());
    }
}

/// The token among the platform's data that stand next in a message. What is not as described
/// there counts as missing.
std::string readToken(sd_bus_message& message) {
    std::string token;
    std::string startupId;
    if (sd_bus_message_enter_container(&message, 'a', "{sv}") < 0) {
        return {};
    }
    while (sd_bus_message_enter_container(&message, 'e', "sv") > 0) {
        const char* key = nullptr;
        sd_bus_message_read(&message, "s", &key);
        const char* value = nullptr;
        const bool isText = sd_bus_message_verify_type(&message, 'v', "s") > 0 &&
                            sd_bus_message_read(&message, "v", "s", &value) >= 0;
        if (!isText) {
            sd_bus_message_skip(&message, "v");
        } else if (std::strcmp(key, tokenKey) == 0) {
            token = value;
        } else if (std::strcmp(key, startupKey) == 0) {
            startupId = value;
        }
        sd_bus_message_exit_container(&message);
    }
    return token.empty() ? startupId : token;
}

}  // namespace

const sd_bus_vtable ApplicationConversation::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Activate", "a{sv}", "", &activate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ActivateAction", "sava{sv}", "", &activateAction, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

ApplicationConversation::ApplicationConversation(const std::string& address, ApplicationNames names,
                                                 Invitation invitation, Callbacks callbacks,
                                                 std::uint64_t& numbers)
    : names_(std::move(names)),
      object_(objectOf(names_.id)),
      invitation_(std::move(invitation)),
      callbacks_(std::move(callbacks)),
      numbers_(numbers),
      bus_(openBus(address)) {
    if (bus_ != nullptr) {
        // First, since whoever has started us over the bus calls as soon as we own the name.
        sd_bus_add_object_vtable(bus_.get(), nullptr, object_.c_str(), applicationInterface,
                                 methods, this);
        requestName();
    }
}

bool ApplicationConversation::serve() {
    return bus_ != nullptr && process(*bus_);
}

Wait ApplicationConversation::nextWait() const {
    return dbus::nextWait(*bus_, std::chrono::steady_clock::time_point::max());
}

void ApplicationConversation::answer(std::uint64_t number) {
    const auto found = unanswered_.find(number);
    if (found != unanswered_.end()) {
        sd_bus_reply_method_return(found->second.get(), "");
        unanswered_.erase(found);
    }
}

void ApplicationConversation::requestName() {
    if (requestsLeft_ > 0) {
        --requestsLeft_;
        sd_bus_request_name_async(bus_.get(), nullptr, names_.id.c_str(), SD_BUS_NAME_QUEUE,
                                  &nameAnswered, this);
    }
}

int ApplicationConversation::nameAnswered(sd_bus_message* message, void* self,
                                          sd_bus_error* /*error*/) {
    auto& conversation = *static_cast<ApplicationConversation*>(self);
    std::uint32_t reply = 0;
    const bool isAnswer = sd_bus_message_is_method_error(message, nullptr) <= 0 &&
                          sd_bus_message_read(message, "u", &reply) >= 0;
    if (isAnswer && (reply == primaryOwner || reply == alreadyOwner)) {
        conversation.callbacks_.isFirst();
    } else if (isAnswer && conversation.callbacks_.isSecond()) {
        conversation.askToTheFront();
    }
    return 0;
}

void ApplicationConversation::askToTheFront() {
    const Message call =
        newCall(*bus_, names_.id.c_str(), object_.c_str(), applicationInterface, "Activate");
    if (call == nullptr) {
        return;
    }
    sd_bus_message_open_container(call.get(), 'a', "{sv}");
    append(*call, tokenKey, invitation_.activationToken);
    append(*call, startupKey, invitation_.startupId);
    sd_bus_message_close_container(call.get());
    sd_bus_call_async(bus_.get(), nullptr, call.get(), &otherAnswered, this, forever);
}

int ApplicationConversation::otherAnswered(sd_bus_message* message, void* self,
                                           sd_bus_error* /*error*/) {
    auto& conversation = *static_cast<ApplicationConversation*>(self);
    if (sd_bus_message_is_method_error(message, nullptr) <= 0) {
        conversation.callbacks_.otherAnswered();
    } else {
        // It may have ended meanwhile, and then the name is ours.
        conversation.requestName();
    }
    return 0;
}

int ApplicationConversation::activate(sd_bus_message* message, void* self,
                                      sd_bus_error* /*error*/) {
    return static_cast<ApplicationConversation*>(self)->take(message, {});
}

int ApplicationConversation::activateAction(sd_bus_message* message, void* self,
                                            sd_bus_error* error) {
    auto& conversation = *static_cast<ApplicationConversation*>(self);
    const char* action = nullptr;
    if (sd_bus_message_read(message, "s", &action) < 0 || sd_bus_message_skip(message, "av") < 0) {
        return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "an action's name is expected");
    }
    const auto& actions = conversation.names_.actions;
    if (std::find(actions.begin(), actions.end(), action) == actions.end()) {
        return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "there is no action %s", action);
    }
    return conversation.take(message, action);
}

int ApplicationConversation::take(sd_bus_message* message, const std::string& action) {
    if (isOwn(message)) {
        // Asked when the other had just gone; the error has us look who has the name.
        return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_FAILED,
                                          "the application has asked itself");
    }
    const std::uint64_t number = ++numbers_;
    unanswered_.emplace(number, Message(sd_bus_message_ref(message)));
    callbacks_.called({.number = number, .action = action, .activationToken = readToken(*message)});
    return 1;
}

bool ApplicationConversation::isOwn(sd_bus_message* message) const {
    const char* own = nullptr;
    const char* sender = sd_bus_message_get_sender(message);
    return sd_bus_get_unique_name(bus_.get(), &own) >= 0 && sender != nullptr &&
           std::strcmp(own, sender) == 0;
}

}  // namespace tavrel::dbus
