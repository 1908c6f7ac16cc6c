#include "tests/support/ShortcutsPortal.h"

#include <algorithm>
#include <utility>

#include "tests/support/BusService.h"

namespace tavrel::support {

namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalObject = "/org/freedesktop/portal/desktop";
constexpr const char* shortcutsInterface = "org.freedesktop.portal.GlobalShortcuts";

/// The text of that key in a dictionary of texts that stands next.
std::string readText(sd_bus_message* message, const std::string& wanted) {
    std::string found;
    sd_bus_message_enter_container(message, 'a', "{sv}");
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = nullptr;
        const char* text = nullptr;
        sd_bus_message_read(message, "s", &key);
        sd_bus_message_read(message, "v", "s", &text);
        if (wanted == key) {
            found = text;
        }
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    return found;
}

}  // namespace

struct ShortcutsPortal::Served {
    Served(const std::string& busAddress, Behaviour wanted)
        : behaviour(std::move(wanted)), service(busAddress) {
        if (behaviour.hasRegistry) {
            service.add(portalObject, "org.freedesktop.host.portal.Registry", registry, this);
        }
        if (behaviour.hasShortcuts) {
            service.add(portalObject, shortcutsInterface, shortcuts, this);
        }
        service.start(portalName);
    }

    void log(const std::string& line) {
        const std::lock_guard lock(mutex);
        lines.push_back(line);
    }

    /// As the documentation of the portals says how they are made.
    std::string pathFor(sd_bus_message* message, const char* kind, const std::string& token) {
        std::string sender = sd_bus_message_get_sender(message) + 1;
        std::replace(sender.begin(), sender.end(), '.', '_');
        return std::string(portalObject) + "/" + kind + "/" + sender + "/" + token;
    }

    static int registerApplication(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
        const char* id = nullptr;
        sd_bus_message_read(message, "s", &id);
        static_cast<Served*>(self)->log(std::string("Register ") + id);
        return sd_bus_reply_method_return(message, "");
    }

    static int createSession(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
        auto& self = *static_cast<Served*>(data);
        self.log("CreateSession");
        const std::string token = readText(message, "handle_token");
        sd_bus_message_rewind(message, 1);
        self.session = self.pathFor(message, "session", readText(message, "session_handle_token"));
        self.client = sd_bus_message_get_sender(message);
        self.openRequest = self.pathFor(message, "request", token);
        const int result = sd_bus_reply_method_return(message, "o", self.openRequest.c_str());
        sd_bus_message* response =
            self.newSignal(sd_bus_message_get_bus(message), self.openRequest.c_str(),
                           "org.freedesktop.portal.Request", "Response");
        sd_bus_message_append(response, "ua{sv}", 0, 1, "session_handle", "s",
                              self.session.c_str());
        self.send(response);
        return result;
    }

    static int bindShortcuts(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
        auto& self = *static_cast<Served*>(data);
        const char* session = nullptr;
        const char* id = nullptr;
        sd_bus_message_read(message, "o", &session);
        sd_bus_message_enter_container(message, 'a', "(sa{sv})");
        sd_bus_message_enter_container(message, 'r', "sa{sv}");
        sd_bus_message_read(message, "s", &id);
        self.log(std::string("BindShortcuts ") + id + " " + readText(message, "preferred_trigger") +
                 (self.session == session ? "" : " in another session"));
        sd_bus_message_exit_container(message);
        sd_bus_message_exit_container(message);
        sd_bus_message_skip(message, "s");
        self.openRequest = self.pathFor(message, "request", readText(message, "handle_token"));
        self.shortcut = id;
        const int result = sd_bus_reply_method_return(message, "o", self.openRequest.c_str());
        if (self.behaviour.answersAtOnce) {
            self.answer(*sd_bus_message_get_bus(message));
        }
        return result;
    }

    sd_bus_message* newSignal(sd_bus* bus, const char* path, const char* interface,
                              const char* member) const {
        sd_bus_message* signal = nullptr;
        sd_bus_message_new_signal(bus, &signal, path, interface, member);
        return signal;
    }

    void send(sd_bus_message* signal) const {
        sd_bus_message_set_destination(signal, client.c_str());
        sd_bus_send(nullptr, signal, nullptr);
        sd_bus_message_unref(signal);
    }

    void answer(sd_bus& bus) const {
        sd_bus_message* response =
            newSignal(&bus, openRequest.c_str(), "org.freedesktop.portal.Request", "Response");
        sd_bus_message_append(response, "u", behaviour.outcome);
        if (behaviour.outcome != 0) {
            sd_bus_message_append(response, "a{sv}", 0);
        } else {
            sd_bus_message_append(response, "a{sv}", 1, "shortcuts", "a(sa{sv})", 1,
                                  shortcut.c_str(), 1, "trigger_description", "s",
                                  behaviour.trigger.c_str());
        }
        send(response);
    }

    const Behaviour behaviour;
    const sd_bus_vtable registry[3] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Register", "sa{sv}", "", &registerApplication, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    const sd_bus_vtable shortcuts[4] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("CreateSession", "a{sv}", "o", &createSession, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("BindShortcuts", "oa(sa{sv})sa{sv}", "o", &bindShortcuts,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    mutable std::mutex mutex;
    std::vector<std::string> lines;
    // The thread's.
    std::string client;
    std::string session;
    std::string openRequest;
    std::string shortcut;
    /// Last, so that it finds all the others.
    BusService service;
};

ShortcutsPortal::ShortcutsPortal(const std::string& busAddress, Behaviour behaviour)
    : served_(std::make_unique<Served>(busAddress, std::move(behaviour))) {}

ShortcutsPortal::~ShortcutsPortal() = default;

std::vector<std::string> ShortcutsPortal::asked() const {
    const std::lock_guard lock(served_->mutex);
    return served_->lines;
}

void ShortcutsPortal::answer() {
    served_->service.post([self = served_.get()](sd_bus& bus) { self->answer(bus); });
}

void ShortcutsPortal::press(const std::string& shortcut) {
    served_->service.post([self = served_.get(), shortcut](sd_bus& bus) {
        sd_bus_message* signal =
            self->newSignal(&bus, portalObject, shortcutsInterface, "Activated");
        sd_bus_message_append(signal, "osta{sv}", self->session.c_str(), shortcut.c_str(),
                              std::uint64_t{1}, 0);
        self->send(signal);
    });
}

void ShortcutsPortal::rebind(const std::string& trigger) {
    served_->service.post([self = served_.get(), trigger](sd_bus& bus) {
        sd_bus_message* signal =
            self->newSignal(&bus, portalObject, shortcutsInterface, "ShortcutsChanged");
        sd_bus_message_append(signal, "oa(sa{sv})", self->session.c_str(), 1,
                              self->shortcut.c_str(), 1, "trigger_description", "s",
                              trigger.c_str());
        self->send(signal);
    });
}

void ShortcutsPortal::closeSession() {
    served_->service.post([self = served_.get()](sd_bus& bus) {
        self->send(self->newSignal(&bus, self->session.c_str(), "org.freedesktop.portal.Session",
                                   "Closed"));
    });
}

}  // namespace tavrel::support
