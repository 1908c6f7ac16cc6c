#include "tests/support/ShortcutsBackend.h"

#include <cstring>

#include "tests/support/BusService.h"

namespace tavrel::support {

namespace {

constexpr const char* backendObject = "/org/freedesktop/portal/desktop";

void appendShortcut(sd_bus_message* message, const std::string& id, const std::string& trigger) {
    sd_bus_message_append(message, "a(sa{sv})", 1, id.c_str(), 1, "trigger_description", "s",
                          trigger.c_str());
}

}  // namespace

struct ShortcutsBackend::Served {
    explicit Served(const std::string& busAddress) : service(busAddress) {
        service.add(backendObject, interface, methods, this);
        service.start(name);
    }

    static int createSession(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
        const char* request = nullptr;
        const char* path = nullptr;
        sd_bus_message_read(message, "oo", &request, &path);
        static_cast<Served*>(data)->session = path;
        return sd_bus_reply_method_return(message, "ua{sv}", 0, 0);
    }

    static int bindShortcuts(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
        auto& self = *static_cast<Served*>(data);
        sd_bus_message_skip(message, "oo");
        const char* id = nullptr;
        sd_bus_message_enter_container(message, 'a', "(sa{sv})");
        sd_bus_message_enter_container(message, 'r', "sa{sv}");
        sd_bus_message_read(message, "s", &id);
        std::string line = id;
        sd_bus_message_enter_container(message, 'a', "{sv}");
        while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
            const char* key = nullptr;
            const char* text = nullptr;
            sd_bus_message_read(message, "s", &key);
            sd_bus_message_read(message, "v", "s", &text);
            if (std::strcmp(key, "preferred_trigger") == 0) {
                line += std::string(" ") + text;
            }
            sd_bus_message_exit_container(message);
        }
        {
            const std::lock_guard lock(self.mutex);
            self.lines.push_back(line);
        }
        self.shortcut = id;
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(message, &reply);
        sd_bus_message_append(reply, "u", 0);
        sd_bus_message_open_container(reply, 'a', "{sv}");
        sd_bus_message_open_container(reply, 'e', "sv");
        sd_bus_message_append(reply, "s", "shortcuts");
        sd_bus_message_open_container(reply, 'v', "a(sa{sv})");
        appendShortcut(reply, self.shortcut, "Super+F9");
        sd_bus_message_close_container(reply);
        sd_bus_message_close_container(reply);
        sd_bus_message_close_container(reply);
        const int result = sd_bus_send(nullptr, reply, nullptr);
        sd_bus_message_unref(reply);
        return result;
    }

    const sd_bus_vtable methods[6] = {SD_BUS_VTABLE_START(0),
                                      SD_BUS_METHOD("CreateSession", "oosa{sv}", "ua{sv}",
                                                    &createSession, SD_BUS_VTABLE_UNPRIVILEGED),
                                      SD_BUS_METHOD("BindShortcuts", "ooa(sa{sv})sa{sv}", "ua{sv}",
                                                    &bindShortcuts, SD_BUS_VTABLE_UNPRIVILEGED),
                                      SD_BUS_SIGNAL("Activated", "osta{sv}", 0),
                                      SD_BUS_SIGNAL("ShortcutsChanged", "oa(sa{sv})", 0),
                                      SD_BUS_VTABLE_END};
    mutable std::mutex mutex;
    std::vector<std::string> lines;
    // The thread's.
    std::string session;
    std::string shortcut;
    /// Last, so that it finds all the others.
    BusService service;
};

ShortcutsBackend::ShortcutsBackend(const std::string& busAddress)
    : served_(std::make_unique<Served>(busAddress)) {}

ShortcutsBackend::~ShortcutsBackend() = default;

std::vector<std::string> ShortcutsBackend::bound() const {
    const std::lock_guard lock(served_->mutex);
    return served_->lines;
}

void ShortcutsBackend::press() {
    served_->service.post([self = served_.get()](sd_bus& bus) {
        sd_bus_emit_signal(&bus, backendObject, interface, "Activated", "osta{sv}",
                           self->session.c_str(), self->shortcut.c_str(), std::uint64_t{1}, 0);
    });
}

void ShortcutsBackend::rebind(const std::string& trigger) {
    served_->service.post([self = served_.get(), trigger](sd_bus& bus) {
        sd_bus_message* signal = nullptr;
        sd_bus_message_new_signal(&bus, &signal, backendObject, interface, "ShortcutsChanged");
        sd_bus_message_append(signal, "o", self->session.c_str());
        appendShortcut(signal, self->shortcut, trigger);
        sd_bus_send(nullptr, signal, nullptr);
        sd_bus_message_unref(signal);
    });
}

}  // namespace tavrel::support
