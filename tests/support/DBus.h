#pragma once

#include <gio/gio.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavrel::support {

struct VariantUnref {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, VariantUnref>;

/// A message bus, or the program that was asked, did not answer or answered with an error.
class DBusError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A private connection to a message bus. Calls block until they are answered.
class DBus {
public:
    /// What is called. `arguments` is a tuple, consumed if floating; null for none.
    struct Call {
        std::string service;
        std::string object;
        const char* interface = nullptr;
        const char* method = nullptr;
        GVariant* arguments = nullptr;
    };

    /// Throws DBusError.
    explicit DBus(const std::string& address);
    ~DBus();
    DBus(const DBus&) = delete;
    DBus& operator=(const DBus&) = delete;

    /// `arguments` is a tuple, consumed if floating; null for none. Returns the tuple of
    /// results. Throws DBusError.
    Variant call(const std::string& service, const std::string& object, const char* interface,
                 const char* method, GVariant* arguments = nullptr) const;

    /// The value of a property. Throws DBusError.
    Variant property(const std::string& service, const std::string& object, const char* interface,
                     const char* name) const;

    /// Makes all calls before it awaits the first answer, and returns the answers in their order.
    /// Throws DBusError when one of them fails, once all have been answered.
    std::vector<Variant> callAll(const std::vector<Call>& calls) const;

private:
    GDBusConnection* connection_;
};

}  // namespace tavrel::support
