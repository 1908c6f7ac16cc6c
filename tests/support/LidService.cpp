#include "tests/support/LidService.h"

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/support/BusService.h"

namespace tavrel::support {

struct LidNames {
    const char* service;
    const char* object;
    const char* interface;
    const char* property;
};

namespace {

LidNames namesOf(LidService::Kind kind) {
    return kind == LidService::Kind::upower
               ? LidNames{"org.freedesktop.UPower", "/org/freedesktop/UPower",
                          "org.freedesktop.UPower", "LidIsClosed"}
               : LidNames{"org.freedesktop.login1", "/org/freedesktop/login1",
                          "org.freedesktop.login1.Manager", "LidClosed"};
}

int answer(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
           const char* /*property*/, sd_bus_message* reply, void* isClosed,
           sd_bus_error* /*error*/) {
    return sd_bus_message_append(reply, "b",
                                 static_cast<std::atomic<bool>*>(isClosed)->load() ? 1 : 0);
}

}  // namespace

struct LidService::Served {
    Served(const std::string& busAddress, Kind kind, bool closed)
        : names(namesOf(kind)),
          emits(kind == Kind::upower),
          isClosed(closed),
          vtable{SD_BUS_VTABLE_START(0),
                 SD_BUS_PROPERTY(
                     names.property, "b", &answer, 0,
                     emits ? std::uint64_t{SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE} : std::uint64_t{0}),
                 SD_BUS_VTABLE_END},
          service(busAddress) {
        service.add(names.object, names.interface, vtable, &isClosed);
        service.start(names.service);
    }
    ~Served() { isEnding = true; }

    const LidNames names;
    const bool emits;
    std::atomic<bool> isClosed;
    std::atomic<bool> isEnding = false;
    const sd_bus_vtable vtable[3];
    /// Last, so that its thread ends first.
    BusService service;
};

LidService::LidService(const std::string& busAddress, Kind kind, bool isClosed)
    : served_(std::make_unique<Served>(busAddress, kind, isClosed)) {}

LidService::~LidService() = default;

void LidService::setClosed(bool isClosed) {
    if (served_->isClosed.exchange(isClosed) == isClosed || !served_->emits) {
        return;
    }
    served_->service.post([names = served_->names](sd_bus& bus) {
        sd_bus_emit_properties_changed(&bus, names.object, names.interface, names.property,
                                       nullptr);
    });
}

void LidService::hang() {
    served_->service.post([&isEnding = served_->isEnding](sd_bus& /*bus*/) {
        while (!isEnding) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
}

}  // namespace tavrel::support
