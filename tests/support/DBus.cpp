#include "tests/support/DBus.h"

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

struct ErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};

[[noreturn]] void raise(const std::string& what, GError* raw) {
    const std::unique_ptr<GError, ErrorFree> error(raw);
    throw DBusError(what + ": " + (error ? error->message : "unknown error"));
}

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

}  // namespace tavrel::support
