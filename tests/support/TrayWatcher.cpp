#include "tests/support/TrayWatcher.h"

#include <atomic>
#include <mutex>

#include "tests/support/BusService.h"

namespace tavrel::support {

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* object = "/StatusNotifierWatcher";

}  // namespace

struct TrayWatcher::Served {
    explicit Served(const std::string& busAddress) : service(busAddress) {
        service.add(object, watcherName, vtable, this);
        service.start(watcherName, SD_BUS_NAME_ALLOW_REPLACEMENT | SD_BUS_NAME_REPLACE_EXISTING);
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
    std::atomic<bool> hasHost = true;
    std::mutex mutex;
    std::vector<std::string> icons;
    /// Last, so that its thread ends first.
    BusService service;
};

TrayWatcher::TrayWatcher(const std::string& busAddress)
    : served_(std::make_unique<Served>(busAddress)) {}

TrayWatcher::~TrayWatcher() = default;

std::vector<std::string> TrayWatcher::icons() const {
    const std::lock_guard lock(served_->mutex);
    return served_->icons;
}

void TrayWatcher::setHost(bool isPresent) {
    if (served_->hasHost.exchange(isPresent) == isPresent) {
        return;
    }
    served_->service.post([isPresent](sd_bus& bus) {
        sd_bus_emit_signal(
            &bus, object, watcherName,
            isPresent ? "StatusNotifierHostRegistered" : "StatusNotifierHostUnregistered", "");
    });
}

}  // namespace tavrel::support
