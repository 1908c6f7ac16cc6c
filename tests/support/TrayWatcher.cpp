#include "tests/support/TrayWatcher.h"

#include <systemd/sd-bus.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace tavrel::support {

namespace {

constexpr const char* name = "org.kde.StatusNotifierWatcher";
constexpr const char* object = "/StatusNotifierWatcher";
/// How long the thread may not notice what is asked of it.
constexpr std::uint64_t turnMicroseconds = 5'000;

struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};

void check(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string("no watcher of the tray: ") + what);
    }
}

}  // namespace

struct TrayWatcher::Served {
    explicit Served(const std::string& busAddress) {
        sd_bus* opened = nullptr;
        check(sd_bus_new(&opened), "new");
        bus.reset(opened);
        check(sd_bus_set_address(opened, busAddress.c_str()), "address");
        check(sd_bus_set_bus_client(opened, 1), "client");
        check(sd_bus_start(opened), "start");
        check(sd_bus_add_object_vtable(opened, nullptr, object, name, vtable, this), "object");
        check(sd_bus_request_name(opened, name, 0), "name");
        thread = std::thread([this] { serve(); });
    }

    ~Served() {
        isEnding = true;
        thread.join();
    }

    void serve() {
        bool told = hasHost;
        while (!isEnding) {
            if (told != hasHost) {
                told = !told;
                sd_bus_emit_signal(
                    bus.get(), object, name,
                    told ? "StatusNotifierHostRegistered" : "StatusNotifierHostUnregistered", "");
            }
            if (sd_bus_process(bus.get(), nullptr) == 0) {
                sd_bus_wait(bus.get(), turnMicroseconds);
            }
        }
    }

    static int take(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
        auto& served = *static_cast<Served*>(self);
        const std::lock_guard lock(served.mutex);
        served.icons.emplace_back(sd_bus_message_get_sender(message));
        return sd_bus_reply_method_return(message, "");
    }

    static int answer(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                      const char* /*property*/, sd_bus_message* reply, void* self,
                      sd_bus_error* /*error*/) {
        return sd_bus_message_append(reply, "b", static_cast<Served*>(self)->hasHost ? 1 : 0);
    }

    const sd_bus_vtable vtable[6] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", &take, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", &answer, 0, 0),
        SD_BUS_SIGNAL("StatusNotifierHostRegistered", "", 0),
        SD_BUS_SIGNAL("StatusNotifierHostUnregistered", "", 0),
        SD_BUS_VTABLE_END};
    std::atomic<bool> isEnding = false;
    std::atomic<bool> hasHost = true;
    std::mutex mutex;
    std::vector<std::string> icons;
    std::unique_ptr<sd_bus, CloseBus> bus;
    std::thread thread;
};

TrayWatcher::TrayWatcher(const std::string& busAddress)
    : served_(std::make_unique<Served>(busAddress)) {}

TrayWatcher::~TrayWatcher() = default;

std::vector<std::string> TrayWatcher::icons() const {
    const std::lock_guard lock(served_->mutex);
    return served_->icons;
}

void TrayWatcher::setHost(bool isPresent) {
    served_->hasHost = isPresent;
}

}  // namespace tavrel::support
