#include "tests/platform/gnome/StandInGnome.h"

#include <algorithm>
#include <future>
#include <utility>

#include "platform/gnome/BusDisplayConfig.h"
#include "tests/support/BusService.h"

namespace tavrel {

namespace {

using gnome::Configuration;
using gnome::LogicalSetting;
using gnome::Monitor;
using gnome::MonitorState;

void within(sd_bus_message* message, char container, const char* contents,
            const std::function<void()>& fill) {
    sd_bus_message_open_container(message, container, contents);
    fill();
    sd_bus_message_close_container(message);
}

void writeNames(sd_bus_message* message, const Monitor& monitor) {
    sd_bus_message_append(message, "(ssss)", monitor.connector.c_str(), monitor.vendor.c_str(),
                          monitor.product.c_str(), monitor.serial.c_str());
}

void writeMode(sd_bus_message* message, const Monitor& monitor, std::size_t at) {
    within(message, 'r', "siiddada{sv}", [&] {
        const gnome::MonitorMode& each = monitor.modes[at];
        sd_bus_message_append(message, "siidd", each.id.c_str(), each.mode.width, each.mode.height,
                              each.mode.refreshMillihertz / 1000.0, 1.0);
        sd_bus_message_append_array(message, 'd', each.mode.scales.data(),
                                    each.mode.scales.size() * sizeof(double));
        within(message, 'a', "{sv}", [&] {
            sd_bus_message_append(message, "{sv}", "is-current", "b",
                                  monitor.currentMode == at ? 1 : 0);
            sd_bus_message_append(message, "{sv}", "is-preferred", "b", at == 0 ? 1 : 0);
        });
    });
}

void writeMonitor(sd_bus_message* message, const Monitor& monitor) {
    within(message, 'r', "(ssss)a(siiddada{sv})a{sv}", [&] {
        writeNames(message, monitor);
        within(message, 'a', "(siiddada{sv})", [&] {
            for (std::size_t at = 0; at < monitor.modes.size(); ++at) {
                writeMode(message, monitor, at);
            }
        });
        sd_bus_message_append(message, "a{sv}", 1, "is-builtin", "b", monitor.isBuiltIn ? 1 : 0);
    });
}

void writeLogical(sd_bus_message* message, const MonitorState& state,
                  const gnome::LogicalMonitor& logical) {
    within(message, 'r', "iiduba(ssss)a{sv}", [&] {
        sd_bus_message_append(message, "iidub", logical.x, logical.y, logical.scale,
                              logical.transform, logical.isPrimary ? 1 : 0);
        within(message, 'a', "(ssss)", [&] {
            for (const std::string& connector : logical.monitors) {
                writeNames(message, *state.monitor(connector));
            }
        });
        sd_bus_message_append(message, "a{sv}", 0);
    });
}

void writeState(sd_bus_message* message, const MonitorState& state) {
    sd_bus_message_append(message, "u", state.serial);
    within(message, 'a', "((ssss)a(siiddada{sv})a{sv})", [&] {
        for (const Monitor& each : state.monitors) {
            writeMonitor(message, each);
        }
    });
    within(message, 'a', "(iiduba(ssss)a{sv})", [&] {
        for (const gnome::LogicalMonitor& each : state.logicalMonitors) {
            writeLogical(message, state, each);
        }
    });
    sd_bus_message_append(message, "a{sv}", 1, "layout-mode", "u", state.layoutMode);
}

LogicalSetting readLogical(sd_bus_message* message) {
    LogicalSetting logical;
    int isPrimary = 0;
    sd_bus_message_read(message, "iidub", &logical.x, &logical.y, &logical.scale,
                        &logical.transform, &isPrimary);
    logical.isPrimary = isPrimary != 0;
    sd_bus_message_enter_container(message, 'a', "(ssa{sv})");
    while (sd_bus_message_enter_container(message, 'r', "ssa{sv}") > 0) {
        const char* connector = nullptr;
        const char* mode = nullptr;
        sd_bus_message_read(message, "ss", &connector, &mode);
        sd_bus_message_skip(message, "a{sv}");
        sd_bus_message_exit_container(message);
        logical.monitors.push_back({.connector = connector, .modeId = mode});
    }
    sd_bus_message_exit_container(message);
    return logical;
}

Configuration readConfiguration(sd_bus_message* message, std::uint32_t& method) {
    Configuration configuration;
    sd_bus_message_read(message, "uu", &configuration.serial, &method);
    sd_bus_message_enter_container(message, 'a', "(iiduba(ssa{sv}))");
    while (sd_bus_message_enter_container(message, 'r', "iiduba(ssa{sv})") > 0) {
        configuration.logicalMonitors.push_back(readLogical(message));
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    return configuration;
}

void emitChanged(sd_bus& bus) {
    sd_bus_emit_signal(&bus, gnome::object, gnome::interface, "MonitorsChanged", nullptr);
}

}  // namespace

struct StandInGnome::Served {
    explicit Served(const std::string& busAddress) : service(busAddress) {
        for (int i = 0; i < 3; ++i) {
            config.add("DP-" + std::to_string(i + 1)).serial = "0x" + std::to_string(i + 1);
            config.show(i * 1920, i == 0);
        }
        service.add(gnome::object, gnome::interface, vtable, this);
        service.start(gnome::service);
    }

    static Served& self(void* data) { return *static_cast<Served*>(data); }

    static int tell(sd_bus_message* question, void* data, sd_bus_error* error) {
        if (self(data).isRefusing) {
            return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, "not now");
        }
        sd_bus_message* answer = nullptr;
        sd_bus_message_new_method_return(question, &answer);
        writeState(answer, self(data).config.state);
        const int sent = sd_bus_send(nullptr, answer, nullptr);
        sd_bus_message_unref(answer);
        return sent;
    }

    static int apply(sd_bus_message* request, void* data, sd_bus_error* error) {
        Served& served = self(data);
        std::uint32_t method = 0;
        const Configuration configuration = readConfiguration(request, method);
        Answer answer = Answer::apply;
        if (method != 0 && !served.answers.empty()) {
            answer = served.answers.front();
            served.answers.erase(served.answers.begin());
        }
        if (answer == Answer::fail) {
            return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, "not so");
        }
        if (answer == Answer::deny || configuration.serial != served.config.state.serial) {
            return sd_bus_error_set(error, SD_BUS_ERROR_ACCESS_DENIED, "the hardware has changed");
        }
        if (answer == Answer::apply) {
            served.config.apply(configuration, static_cast<gnome::DisplayConfig::Method>(method));
            if (method != 0) {
                emitChanged(*sd_bus_message_get_bus(request));
            }
        }
        return sd_bus_reply_method_return(request, nullptr);
    }

    /// Runs it on the thread, and blocks until it is done.
    void run(const std::function<void(sd_bus&)>& task) {
        std::promise<void> done;
        service.post([&](sd_bus& bus) {
            task(bus);
            done.set_value();
        });
        done.get_future().wait();
    }

    gnome::SimulatedDisplayConfig config;
    std::vector<Answer> answers;
    bool isRefusing = false;
    const sd_bus_vtable vtable[4] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("GetCurrentState", "",
                      "ua((ssss)a(siiddada{sv})a{sv})a(iiduba(ssss)a{sv})a{sv}", &tell,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("ApplyMonitorsConfig", "uua(iiduba(ssa{sv}))a{sv}", "", &apply,
                      SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    /// Last, so that its thread ends first.
    support::BusService service;
};

StandInGnome::StandInGnome(const std::string& busAddress)
    : served_(std::make_unique<Served>(busAddress)) {}

StandInGnome::~StandInGnome() = default;

void StandInGnome::answerNext(std::vector<Answer> answers) {
    served_->run([&](sd_bus&) { served_->answers = std::move(answers); });
}

void StandInGnome::refuseToTell(bool isRefusing) {
    served_->run([&](sd_bus&) { served_->isRefusing = isRefusing; });
}

MonitorState StandInGnome::state() {
    MonitorState state;
    served_->run([&](sd_bus&) { state = served_->config.state; });
    return state;
}

bool StandInGnome::isOn(const std::string& connector) {
    bool isOn = false;
    served_->run([&](sd_bus&) { isOn = served_->config.isOn(connector); });
    return isOn;
}

void StandInGnome::change(const std::function<void(MonitorState&)>& change) {
    served_->run([&](sd_bus& bus) {
        change(served_->config.state);
        emitChanged(bus);
    });
}

void StandInGnome::unplug(const std::string& connector) {
    change([&](MonitorState& state) {
        ++state.serial;
        std::erase_if(state.monitors,
                      [&](const auto& each) { return each.connector == connector; });
        std::erase_if(state.logicalMonitors,
                      [&](const auto& each) { return each.monitors == std::vector{connector}; });
    });
}

void StandInGnome::plug(Monitor monitor) {
    change([&](MonitorState& state) {
        ++state.serial;
        int right = 0;
        for (const gnome::LogicalMonitor& each : state.logicalMonitors) {
            const Monitor* shows = state.monitor(each.monitors.front());
            right = std::max(right, each.x + shows->modes.at(*shows->currentMode).mode.width);
        }
        monitor.currentMode = 0;
        state.logicalMonitors.push_back({.x = right, .monitors = {monitor.connector}});
        state.monitors.push_back(std::move(monitor));
    });
}

void StandInGnome::plugOff(Monitor monitor) {
    change([&](MonitorState& state) {
        ++state.serial;
        monitor.currentMode.reset();
        state.monitors.push_back(std::move(monitor));
    });
}

}  // namespace tavrel
