#include "platform/gnome/BusDisplayConfig.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace tavrel::gnome {

namespace {

class Error {
public:
    Error() = default;
    ~Error() { sd_bus_error_free(&error_); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;

    sd_bus_error* get() { return &error_; }
    bool isOneOf(std::initializer_list<const char*> names) const {
        for (const char* name : names) {
            if (sd_bus_error_has_name(&error_, name) > 0) {
                return true;
            }
        }
        return false;
    }

private:
    sd_bus_error error_ = {};
};

Reply replyOf(const Error& error) {
    if (error.isOneOf({SD_BUS_ERROR_ACCESS_DENIED})) {
        return Reply::denied;
    }
    if (error.isOneOf({SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER,
                       SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_INTERFACE,
                       SD_BUS_ERROR_UNKNOWN_OBJECT, SD_BUS_ERROR_NOT_SUPPORTED})) {
        return Reply::absent;
    }
    if (error.isOneOf({SD_BUS_ERROR_NO_REPLY, SD_BUS_ERROR_TIMEOUT, SD_BUS_ERROR_DISCONNECTED})) {
        return Reply::none;
    }
    return Reply::refused;
}

dbus::Message newCall(sd_bus& bus, const char* ofInterface, const char* method) {
    return dbus::newCallToRunning(bus, service, object, ofInterface, method);
}

/// Writes containers, and closes them; that memory runs out shows when the message is sent.
class Writer {
public:
    explicit Writer(sd_bus_message* message) : message_(message) {}

    template <typename... Values>
    void write(const char* types, Values... values) {
        sd_bus_message_append(message_, types, values...);
    }

    template <typename Fill>
    void within(char container, const char* contents, const Fill& fill) {
        sd_bus_message_open_container(message_, container, contents);
        fill();
        sd_bus_message_close_container(message_);
    }

private:
    sd_bus_message* message_;
};

void write(Writer& writer, const MonitorSetting& monitor) {
    writer.within(SD_BUS_TYPE_STRUCT, "ssa{sv}", [&] {
        writer.write("ss", monitor.connector.c_str(), monitor.modeId.c_str());
        writer.within(SD_BUS_TYPE_ARRAY, "{sv}", [&] {
            const MonitorSettings& settings = monitor.settings;
            if (settings.isUnderscanning) {
                writer.write("{sv}", "underscanning", "b", 1);
            }
            if (settings.colorMode.has_value()) {
                writer.write("{sv}", "color-mode", "u", *settings.colorMode);
            }
            if (settings.rgbRange.has_value()) {
                writer.write("{sv}", "rgb-range", "u", *settings.rgbRange);
            }
        });
    });
}

void write(Writer& writer, const LogicalSetting& logical) {
    writer.within(SD_BUS_TYPE_STRUCT, "iiduba(ssa{sv})", [&] {
        writer.write("iidub", logical.x, logical.y, logical.scale, logical.transform,
                     logical.isPrimary ? 1 : 0);
        writer.within(SD_BUS_TYPE_ARRAY, "(ssa{sv})", [&] {
            for (const MonitorSetting& each : logical.monitors) {
                write(writer, each);
            }
        });
    });
}

void write(Writer& writer, const Configuration& configuration, DisplayConfig::Method method) {
    writer.write("uu", configuration.serial, static_cast<std::uint32_t>(method));
    writer.within(SD_BUS_TYPE_ARRAY, "(iiduba(ssa{sv}))", [&] {
        for (const LogicalSetting& each : configuration.logicalMonitors) {
            write(writer, each);
        }
    });
    writer.within(SD_BUS_TYPE_ARRAY, "{sv}", [&] {
        if (configuration.layoutMode.has_value()) {
            writer.write("{sv}", "layout-mode", "u", *configuration.layoutMode);
        }
    });
}

}  // namespace

dbus::Message stateQuestion(sd_bus& bus) {
    return newCall(bus, interface, "GetCurrentState");
}

DisplayConfig::Reading BusDisplayConfig::read() {
    sd_bus* bus = link_.bus(timeout_);
    if (bus == nullptr) {
        return {.reply = Reply::absent};
    }
    const dbus::Message question = stateQuestion(*bus);
    const Called called = call(bus, question.get());
    if (called.reply != Reply::done) {
        return {.reply = called.reply};
    }
    std::optional<MonitorState> state = readState(called.answer.get());
    return {.reply = state.has_value() ? Reply::done : Reply::refused, .state = std::move(state)};
}

bool BusDisplayConfig::isAllowed() {
    sd_bus* bus = link_.bus(timeout_);
    if (bus == nullptr) {
        return true;
    }
    const dbus::Message question = newCall(*bus, "org.freedesktop.DBus.Properties", "Get");
    if (question == nullptr ||
        sd_bus_message_append(question.get(), "ss", interface, "ApplyMonitorsConfigAllowed") < 0) {
        return true;
    }
    const Called called = call(bus, question.get());
    int isAllowed = 1;
    const bool isSaid = called.reply == Reply::done &&
                        sd_bus_message_read(called.answer.get(), "v", "b", &isAllowed) > 0;
    return !isSaid || isAllowed != 0;
}

Reply BusDisplayConfig::apply(const Configuration& configuration, Method method) {
    sd_bus* bus = link_.bus(timeout_);
    if (bus == nullptr) {
        return Reply::absent;
    }
    const dbus::Message request = newCall(*bus, interface, "ApplyMonitorsConfig");
    if (request != nullptr) {
        Writer writer(request.get());
        write(writer, configuration, method);
    }
    return call(bus, request.get()).reply;
}

BusDisplayConfig::Called BusDisplayConfig::call(sd_bus* bus, sd_bus_message* question) {
    using std::chrono::microseconds;
    if (question == nullptr) {
        return {};
    }
    Error error;
    sd_bus_message* answer = nullptr;
    const int called =
        sd_bus_call(bus, question, static_cast<std::uint64_t>(microseconds(timeout_).count()),
                    error.get(), &answer);
    if (called >= 0) {
        return {.reply = Reply::done, .answer = dbus::Message(answer)};
    }
    return {.reply = called == -ETIMEDOUT ? Reply::none : replyOf(error)};
}

}  // namespace tavrel::gnome
