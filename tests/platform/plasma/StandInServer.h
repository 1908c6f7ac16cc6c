#pragma once

#include <plasma-outputs-server.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <wayland-server.h>

#include <algorithm>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/posix/FileDescriptor.h"
#include "tests/platform/plasma/StandInPlasma.h"

namespace tavrel {

/// The stand-in's thread, and all that is done on it.
class StandInPlasma::Server {
public:
    Server(std::size_t outputs, Announcing announcing) : announcing_(announcing) {
        display_ = wl_display_create();
        listen();
        wakeUp_ = FileDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
        wakeUps_ = wl_event_loop_add_fd(
            wl_display_get_event_loop(display_), wakeUp_.number(), WL_EVENT_READABLE,
            [](int, std::uint32_t, void* data) { return static_cast<Server*>(data)->runTasks(); },
            this);
        wl_global_create(display_, &kde_output_management_v2_interface, managementVersion, this,
                         bindManagement);
        wl_global_create(display_, &kde_output_order_v1_interface, 1, this, bindOrder);
        if (announcing_ == Announcing::byRegistry) {
            wl_global_create(display_, &kde_output_device_registry_v2_interface, registryVersion,
                             this, bindRegistry);
        }
        for (std::size_t i = 0; i < outputs; ++i) {
            Output output{.name = "DP-" + std::to_string(i + 1)};
            output.x = static_cast<std::int32_t>(i) * output.modes.front().width;
            output.priority = static_cast<std::uint32_t>(i + 1);
            add(std::move(output));
        }
        thread_ = std::thread([this] { wl_display_run(display_); });
    }

    ~Server() {
        run([this] { wl_display_terminate(display_); });
        thread_.join();
        wl_event_source_remove(wakeUps_);
        wl_display_destroy_clients(display_);
        wl_display_destroy(display_);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Runs it on the thread, and blocks until it is done.
    void run(const std::function<void()>& task) {
        std::promise<void> done;
        {
            const std::lock_guard lock(mutex_);
            tasks_.emplace_back([&] {
                task();
                done.set_value();
            });
        }
        ::eventfd_write(wakeUp_.number(), 1);
        done.get_future().wait();
    }

    // ---- All that follows is for the thread.

    struct Device {
        Server& server;
        Output state;
        wl_global* global = nullptr;
        std::vector<wl_resource*> resources = {};
        /// Of each resource, those of its modes.
        std::map<wl_resource*, std::vector<wl_resource*>> modes = {};
    };

    void add(Output output) {
        devices.push_back(std::make_unique<Device>(Device{*this, std::move(output)}));
        Device& device = *devices.back();
        if (announcing_ == Announcing::byGlobals) {
            // Of the last version that has globals; nobody is to be told more than is asked.
            device.global = wl_global_create(display_, &kde_output_device_v2_interface, 20, &device,
                                             bindDevice);
        }
        for (wl_resource* registry : registries_) {
            announce(registry, device);
        }
    }

    void remove(const std::string& name) {
        const auto found = std::find_if(devices.begin(), devices.end(),
                                        [&](const auto& each) { return each->state.name == name; });
        Device& device = **found;
        for (wl_resource* resource : device.resources) {
            if (announcing_ == Announcing::byRegistry) {
                kde_output_device_v2_send_removed(resource);
            }
            wl_resource_set_user_data(resource, nullptr);
        }
        if (device.global != nullptr) {
            wl_global_destroy(device.global);
        }
        graveyard_.push_back(std::move(*found));
        devices.erase(found);
        sendOrder();
    }

    void dropClients() { wl_display_destroy_clients(display_); }

    Device* find(const std::string& name) {
        for (const auto& device : devices) {
            if (device->state.name == name) {
                return device.get();
            }
        }
        return nullptr;
    }

    void sendState(Device& device) {
        for (wl_resource* resource : device.resources) {
            describe(device, resource);
        }
    }

    void sendOrder() {
        std::vector<const Output*> order;
        for (const auto& device : devices) {
            if (device->state.isEnabled) {
                order.push_back(&device->state);
            }
        }
        std::stable_sort(order.begin(), order.end(),
                         [](auto* a, auto* b) { return a->priority < b->priority; });
        for (wl_resource* resource : orders_) {
            for (const Output* output : order) {
                kde_output_order_v1_send_output(resource, output->name.c_str());
            }
            kde_output_order_v1_send_done(resource);
        }
    }

    std::vector<std::unique_ptr<Device>> devices;
    std::vector<Answer> answers;
    std::size_t configurations = 0;
    std::string path;

private:
    static constexpr int registryVersion = 21;
    static constexpr int managementVersion = 3;

    /// What a client wants to be changed.
    struct Configuration {
        Server& server;
        std::map<Device*, Output> wanted;
        bool isFaulty = false;

        Output& of(wl_resource* device) {
            auto* const found = static_cast<Device*>(wl_resource_get_user_data(device));
            return wanted.try_emplace(found, found->state).first->second;
        }
    };

    static const struct kde_output_management_v2_interface management;
    static const struct kde_output_configuration_v2_interface configuration;
    static const struct kde_output_device_v2_interface deviceRequests;
    static const struct kde_output_device_registry_v2_interface registryRequests;
    static const struct kde_output_order_v1_interface orderRequests;

    static Server& self(void* data) { return *static_cast<Server*>(data); }
    static Configuration& configurationOf(wl_resource* resource) {
        return *static_cast<Configuration*>(wl_resource_get_user_data(resource));
    }

    void listen() {
        path = (folder_.path() / "wayland").string();
        const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(path.begin(), path.end(), std::begin(address.sun_path));
        if (::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(socket, 128) != 0 || wl_display_add_socket_fd(display_, socket) != 0) {
            throw std::runtime_error("the stand-in cannot listen at " + path);
        }
    }

    int runTasks() {
        eventfd_t ignored = 0;
        ::eventfd_read(wakeUp_.number(), &ignored);
        std::vector<std::function<void()>> tasks;
        {
            const std::lock_guard lock(mutex_);
            tasks.swap(tasks_);
        }
        for (const auto& task : tasks) {
            task();
        }
        return 0;
    }

    static void bindManagement(wl_client* client, void* data, std::uint32_t version,
                               std::uint32_t id) {
        wl_resource* resource = wl_resource_create(client, &kde_output_management_v2_interface,
                                                   static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &management, data, nullptr);
    }

    static void bindOrder(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
        wl_resource* resource = wl_resource_create(client, &kde_output_order_v1_interface,
                                                   static_cast<int>(version), id);
        self(data).orders_.push_back(resource);
        wl_resource_set_implementation(resource, &orderRequests, data, [](wl_resource* gone) {
            std::erase(self(wl_resource_get_user_data(gone)).orders_, gone);
        });
        self(data).sendOrder();
    }

    static void bindRegistry(wl_client* client, void* data, std::uint32_t version,
                             std::uint32_t id) {
        wl_resource* resource = wl_resource_create(client, &kde_output_device_registry_v2_interface,
                                                   static_cast<int>(version), id);
        self(data).registries_.push_back(resource);
        wl_resource_set_implementation(resource, &registryRequests, data, [](wl_resource* gone) {
            std::erase(self(wl_resource_get_user_data(gone)).registries_, gone);
        });
        for (const auto& device : self(data).devices) {
            self(data).announce(resource, *device);
        }
    }

    static void bindDevice(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
        auto& device = *static_cast<Device*>(data);
        device.server.begin(device, wl_resource_create(client, &kde_output_device_v2_interface,
                                                       static_cast<int>(version), id));
    }

    void announce(wl_resource* registry, Device& device) {
        wl_resource* resource =
            wl_resource_create(wl_resource_get_client(registry), &kde_output_device_v2_interface,
                               wl_resource_get_version(registry), 0);
        kde_output_device_registry_v2_send_output(registry, resource);
        begin(device, resource);
    }

    /// All that is said once, and what may change.
    void begin(Device& device, wl_resource* resource) {
        device.resources.push_back(resource);
        wl_resource_set_implementation(resource, &deviceRequests, &device, [](wl_resource* gone) {
            if (auto* const owner = static_cast<Device*>(wl_resource_get_user_data(gone))) {
                std::erase(owner->resources, gone);
                owner->modes.erase(gone);
            }
        });
        for (std::size_t i = 0; i < device.state.modes.size(); ++i) {
            wl_resource* mode = wl_resource_create(wl_resource_get_client(resource),
                                                   &kde_output_device_mode_v2_interface,
                                                   wl_resource_get_version(resource), 0);
            kde_output_device_v2_send_mode(resource, mode);
            kde_output_device_mode_v2_send_size(mode, device.state.modes[i].width,
                                                device.state.modes[i].height);
            kde_output_device_mode_v2_send_refresh(mode, device.state.modes[i].refresh);
            if (i == 0) {
                kde_output_device_mode_v2_send_preferred(mode);
            }
            device.modes[resource].push_back(mode);
        }
        kde_output_device_v2_send_edid(resource, device.state.edid.c_str());
        kde_output_device_v2_send_uuid(resource, ("uuid of " + device.state.name).c_str());
        if (wl_resource_get_version(resource) >= KDE_OUTPUT_DEVICE_V2_NAME_SINCE_VERSION) {
            kde_output_device_v2_send_name(resource, device.state.name.c_str());
        }
        describe(device, resource);
    }

    static void describe(Device& device, wl_resource* resource) {
        const Output& state = device.state;
        kde_output_device_v2_send_geometry(resource, state.x, state.y, 600, 340, 0, "Maker",
                                           "Model", state.transform);
        kde_output_device_v2_send_scale(resource, wl_fixed_from_double(state.scale));
        if (state.isEnabled) {
            kde_output_device_v2_send_current_mode(resource, device.modes[resource][state.mode]);
        }
        kde_output_device_v2_send_enabled(resource, state.isEnabled ? 1 : 0);
        if (wl_resource_get_version(resource) >= KDE_OUTPUT_DEVICE_V2_PRIORITY_SINCE_VERSION) {
            kde_output_device_v2_send_priority(resource, state.priority);
            kde_output_device_v2_send_auto_brightness(resource, 0);
        }
        kde_output_device_v2_send_done(resource);
    }

    void apply(wl_client* client, wl_resource* resource) {
        ++configurations;
        Answer answer = Answer::apply;
        if (!answers.empty()) {
            answer = answers.front();
            answers.erase(answers.begin());
        }
        const bool isDropped = answer == Answer::dropBefore || answer == Answer::dropAfter;
        if (answer == Answer::apply || answer == Answer::dropAfter) {
            if (!carryOut(configurationOf(resource))) {
                answer = Answer::fail;
            }
        }
        if (isDropped) {
            // Not from inside its own request.
            const std::lock_guard lock(mutex_);
            tasks_.emplace_back([this] { dropClients(); });
            ::eventfd_write(wakeUp_.number(), 1);
        } else if (answer == Answer::fail) {
            kde_output_configuration_v2_send_failed(resource);
        } else if (answer != Answer::nothing) {
            kde_output_configuration_v2_send_applied(resource);
        }
        static_cast<void>(client);
    }

    /// As strict as a real one.
    bool carryOut(Configuration& wanted) {
        if (wanted.isFaulty) {
            return false;
        }
        bool isAnythingOn = false;
        for (const auto& device : devices) {
            const auto found = wanted.wanted.find(device.get());
            isAnythingOn = isAnythingOn || (found == wanted.wanted.end() ? device->state.isEnabled
                                                                         : found->second.isEnabled);
        }
        if (!isAnythingOn) {
            return false;
        }
        for (auto& [device, state] : wanted.wanted) {
            device->state = state;
            sendState(*device);
        }
        sendOrder();
        return true;
    }

    const Announcing announcing_;
    support::TemporaryFolder folder_;
    wl_display* display_;
    std::vector<wl_resource*> orders_;
    std::vector<wl_resource*> registries_;
    std::vector<std::unique_ptr<Device>> graveyard_;
    FileDescriptor wakeUp_;
    wl_event_source* wakeUps_ = nullptr;
    std::mutex mutex_;
    std::vector<std::function<void()>> tasks_;
    std::thread thread_;
};

}  // namespace tavrel
