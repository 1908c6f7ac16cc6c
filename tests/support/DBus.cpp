#include "tests/support/DBus.h"

#include <utility>

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

struct ErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};

/// Consumes the error.
std::string textOf(GError* raw) {
    const std::unique_ptr<GError, ErrorFree> error(raw);
    return error ? error->message : "unknown error";
}

[[noreturn]] void raise(const std::string& what, GError* error) {
    throw DBusError(what + ": " + textOf(error));
}

/// Where this thread's answers arrive, for as long as this lives.
class OwnContext {
public:
    OwnContext() { g_main_context_push_thread_default(context_); }
    ~OwnContext() {
        g_main_context_pop_thread_default(context_);
        g_main_context_unref(context_);
    }
    OwnContext(const OwnContext&) = delete;
    OwnContext& operator=(const OwnContext&) = delete;

    GMainContext* get() const { return context_; }

private:
    GMainContext* context_ = g_main_context_new();
};

/// A call that was made.
struct Pending {
    static void finish(GObject* connection, GAsyncResult* result, gpointer pending) {
        auto& self = *static_cast<Pending*>(pending);
        GError* error = nullptr;
        self.answer.reset(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &error));
        if (!self.answer) {
            self.error = textOf(error);
        }
        self.isDone = true;
    }

    bool isDone = false;
    Variant answer;
    std::string error;
};

}  // namespace

DBus::DBus(const std::string& address) {
    GError* error = nullptr;
    constexpr auto flags =
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    connection_ =
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, &error);
    if (connection_ == nullptr) {
        raise("no message bus at " + address, error);
    }
}

DBus::~DBus() {
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
}

Variant DBus::call(const std::string& service, const std::string& object, const char* interface,
                   const char* method, GVariant* arguments) const {
    GError* error = nullptr;
    Variant result(g_dbus_connection_call_sync(
        connection_, service.c_str(), object.c_str(), interface, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NONE, static_cast<int>(defaultTimeout.count()), nullptr, &error));
    if (!result) {
        raise(std::string(method), error);
    }
    return result;
}

Variant DBus::property(const std::string& service, const std::string& object, const char* interface,
                       const char* name) const {
    const Variant result = call(service, object, "org.freedesktop.DBus.Properties", "Get",
                                g_variant_new("(ss)", interface, name));
    GVariant* value = nullptr;
    g_variant_get(result.get(), "(v)", &value);
    return Variant(value);
}

std::vector<Variant> DBus::callAll(const std::vector<Call>& calls) const {
    const OwnContext context;
    std::vector<Pending> all(calls.size());
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const Call& each = calls[i];
        g_dbus_connection_call(connection_, each.service.c_str(), each.object.c_str(),
                               each.interface, each.method, each.arguments, nullptr,
                               G_DBUS_CALL_FLAGS_NONE, static_cast<int>(defaultTimeout.count()),
                               nullptr, Pending::finish, &all[i]);
    }
    for (const Pending& each : all) {
        while (!each.isDone) {
            g_main_context_iteration(context.get(), TRUE);
        }
    }
    std::vector<Variant> answers;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!all[i].answer) {
            throw DBusError(std::string(calls[i].method) + ": " + all[i].error);
        }
        answers.push_back(std::move(all[i].answer));
    }
    return answers;
}

}  // namespace tavrel::support
