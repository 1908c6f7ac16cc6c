#include "platform/dbus/ShortcutsConversation.h"

#include <cstring>
#include <utility>

namespace tavrel::dbus {

namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* portalObject = "/org/freedesktop/portal/desktop";
constexpr const char* shortcuts = "org.freedesktop.portal.GlobalShortcuts";
constexpr std::chrono::seconds pauseAfterClosing{5};
/// The bus library's own.
constexpr std::uint64_t usualTimeout = 0;
/// A request's outcome other than the user's no: 0 yes, 1 no, 2 ended otherwise.
constexpr std::uint32_t granted = 0;
constexpr std::uint32_t refused = 1;

ShortcutsConversation& conversation(void* self) {
    return *static_cast<ShortcutsConversation*>(self);
}

/// Goes through a dictionary of variants that stands next in `message`. `use` is called with
/// each key and reads the value, or returns false to have it passed over.
template <typename Use>
void readDictionary(sd_bus_message& message, Use use) {
    if (sd_bus_message_enter_container(&message, 'a', "{sv}") <= 0) {
        return;
    }
    while (sd_bus_message_enter_container(&message, 'e', "sv") > 0) {
        const char* key = nullptr;
        if (sd_bus_message_read(&message, "s", &key) <= 0) {
            return;
        }
        if (!use(key)) {
            sd_bus_message_skip(&message, "v");
        }
        sd_bus_message_exit_container(&message);
    }
    sd_bus_message_exit_container(&message);
}

/// The text in the variant that stands next; std::nullopt when it holds something else, and then
/// it has still to be passed over.
std::optional<std::string> readText(sd_bus_message& message) {
    const char* text = nullptr;
    for (const char* type : {"s", "o"}) {
        if (sd_bus_message_verify_type(&message, 'v', type) > 0 &&
            sd_bus_message_read(&message, "v", type, &text) > 0) {
            return text;
        }
    }
    return std::nullopt;
}

bool endsWith(const char* text, const std::string& end) {
    const std::string whole = text == nullptr ? "" : text;
    return !end.empty() && whole.ends_with("/" + end);
}

}  // namespace

ShortcutsConversation::ShortcutsConversation(const std::string& address, std::string applicationId,
                                             Shortcut shortcut, std::function<void()> pressed)
    : applicationId_(std::move(applicationId)),
      shortcut_(std::move(shortcut)),
      pressed_(std::move(pressed)),
      bus_(openBus(address)) {
    if (bus_ == nullptr) {
        return;
    }
    const std::string says = "type='signal',sender='" + std::string(portal) + "',interface='";
    addMatch(*bus_, ownerChanges(portal), &ownerChanged, this);
    addMatch(*bus_, says + "org.freedesktop.portal.Request',member='Response'", &responded, this);
    addMatch(*bus_, says + "org.freedesktop.portal.Session',member='Closed'", &closed, this);
    addMatch(*bus_, says + shortcuts + "',member='Activated'", &activated, this);
    addMatch(*bus_, says + shortcuts + "',member='ShortcutsChanged'", &shortcutsChanged, this);
    begin();
}

bool ShortcutsConversation::serve() {
    if (bus_ == nullptr) {
        return false;
    }
    if (Clock::now() >= nextBegin_) {
        begin();
    }
    return process(*bus_);
}

Wait ShortcutsConversation::nextWait() const {
    return dbus::nextWait(*bus_, nextBegin_);
}

void ShortcutsConversation::begin() {
    end();
    if (isRefused_) {
        return;
    }
    const Message call = newPortalCall("org.freedesktop.host.portal.Registry", "Register");
    if (call == nullptr) {
        return;
    }
    sd_bus_message_append(call.get(), "sa{sv}", applicationId_.c_str(), 0);
    step_ = Step::introducing;
    send(call, &introduced, usualTimeout);
}

void ShortcutsConversation::end() {
    nextBegin_ = Clock::time_point::max();
    pending_.reset();
    requestToken_.clear();
    session_.clear();
    trigger_.reset();
    step_ = Step::idle;
}

Message ShortcutsConversation::newPortalCall(const char* interface, const char* method) const {
    return newCall(*bus_, portal, portalObject, interface, method);
}

std::string ShortcutsConversation::newToken(const char* kind) {
    return "tavrel_" + std::string(kind) + std::to_string(++tokens_);
}

void ShortcutsConversation::send(const Message& call, sd_bus_message_handler_t answered,
                                 std::uint64_t timeout) {
    pending_ = dbus::send(*bus_, call, answered, this, timeout);
}

int ShortcutsConversation::introduced(sd_bus_message* /*message*/, void* self,
                                      sd_bus_error* /*error*/) {
    // Whatever the answer: an older portal finds out by itself who we are, or does without.
    conversation(self).createSession();
    return 0;
}

void ShortcutsConversation::createSession() {
    const Message call = newPortalCall(shortcuts, "CreateSession");
    if (call == nullptr) {
        return;
    }
    requestToken_ = newToken("create");
    sd_bus_message_append(call.get(), "a{sv}", 2, "handle_token", "s", requestToken_.c_str(),
                          "session_handle_token", "s", newToken("session").c_str());
    step_ = Step::creating;
    // Users take their time with dialogs, and portals with starting.
    send(call, &requested, forever);
}

void ShortcutsConversation::bind() {
    const Message call = newPortalCall(shortcuts, "BindShortcuts");
    if (call == nullptr) {
        return;
    }
    requestToken_ = newToken("bind");
    sd_bus_message_append(call.get(), "oa(sa{sv})sa{sv}", session_.c_str(), 1, shortcut_.id.c_str(),
                          2, "description", "s", shortcut_.description.c_str(), "preferred_trigger",
                          "s", shortcut_.preferredTrigger.c_str(), "", 1, "handle_token", "s",
                          requestToken_.c_str());
    step_ = Step::binding;
    send(call, &requested, forever);
}

int ShortcutsConversation::requested(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    if (sd_bus_message_is_method_error(message, nullptr) > 0) {
        conversation(self).end();
    }
    return 0;
}

int ShortcutsConversation::responded(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    // The path's end is the token that we chose.
    if (endsWith(sd_bus_message_get_path(message), conversation(self).requestToken_)) {
        conversation(self).takeResponse(*message);
    }
    return 0;
}

void ShortcutsConversation::takeResponse(sd_bus_message& message) {
    std::uint32_t outcome = refused;
    sd_bus_message_read(&message, "u", &outcome);
    if (outcome != granted) {
        isRefused_ = outcome == refused && step_ == Step::binding;
        end();
    } else if (step_ == Step::creating) {
        readDictionary(message, [&](const std::string& key) {
            const auto text = key == "session_handle" ? readText(message) : std::nullopt;
            session_ = text.value_or(session_);
            return text.has_value();
        });
        if (sd_bus_object_path_is_valid(session_.c_str()) > 0) {
            bind();
        } else {
            end();
        }
    } else if (step_ == Step::binding) {
        step_ = Step::bound;
        readDictionary(message, [&](const std::string& key) {
            if (key != "shortcuts" ||
                sd_bus_message_enter_container(&message, 'v', "a(sa{sv})") <= 0) {
                return false;
            }
            takeShortcuts(message);
            sd_bus_message_exit_container(&message);
            return true;
        });
    }
}

void ShortcutsConversation::takeShortcuts(sd_bus_message& message) {
    trigger_.reset();
    if (sd_bus_message_enter_container(&message, 'a', "(sa{sv})") < 0) {
        return;
    }
    while (sd_bus_message_enter_container(&message, 'r', "sa{sv}") > 0) {
        const char* id = nullptr;
        sd_bus_message_read(&message, "s", &id);
        const bool isOurs = id != nullptr && shortcut_.id == id;
        readDictionary(message, [&](const std::string& key) {
            const auto text =
                isOurs && key == "trigger_description" ? readText(message) : std::nullopt;
            if (text.has_value() && !text->empty()) {
                trigger_ = text;
            }
            return text.has_value();
        });
        sd_bus_message_exit_container(&message);
    }
    sd_bus_message_exit_container(&message);
}

int ShortcutsConversation::activated(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    const char* session = nullptr;
    const char* id = nullptr;
    if (sd_bus_message_read(message, "os", &session, &id) > 0 &&
        conversation(self).session_ == session && conversation(self).shortcut_.id == id) {
        conversation(self).pressed_();
    }
    return 0;
}

int ShortcutsConversation::shortcutsChanged(sd_bus_message* message, void* self,
                                            sd_bus_error* /*error*/) {
    const char* session = nullptr;
    if (sd_bus_message_read(message, "o", &session) > 0 && conversation(self).session_ == session) {
        conversation(self).takeShortcuts(*message);
    }
    return 0;
}

int ShortcutsConversation::closed(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    ShortcutsConversation& here = conversation(self);
    const char* path = sd_bus_message_get_path(message);
    if (path != nullptr && here.session_ == path) {
        // Once it was ours, something else than the user has ended it.
        const bool wasBound = here.step_ == Step::bound;
        here.end();
        if (wasBound) {
            here.nextBegin_ = Clock::now() + pauseAfterClosing;
        }
    }
    return 0;
}

int ShortcutsConversation::ownerChanged(sd_bus_message* message, void* self,
                                        sd_bus_error* /*error*/) {
    ShortcutsConversation& here = conversation(self);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &now) <= 0) {
        return 0;
    }
    if (std::strlen(now) == 0) {
        here.end();
    } else if (here.step_ != Step::introducing) {
        // Else our own first call has started it.
        here.begin();
    }
    return 0;
}

}  // namespace tavrel::dbus
