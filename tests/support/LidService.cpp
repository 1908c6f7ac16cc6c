#include "tests/support/LidService.h"

#include <systemd/sd-bus.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace tavrel::support {

namespace {

/// How long the thread may not notice what is asked of it.
constexpr std::uint64_t turnMicroseconds = 5'000;

struct CloseBus {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};

void check(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string("no lid service: ") + what);
    }
}

struct Names {
    const char* service;
    const char* object;
    const char* interface;
    const char* property;
};

Names namesOf(LidService::Kind kind) {
    return kind == LidService::Kind::upower
               ? Names{"org.freedesktop.UPower", "/org/freedesktop/UPower",
                       "org.freedesktop.UPower", "LidIsClosed"}
               : Names{"org.freedesktop.login1", "/org/freedesktop/login1",
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
                 SD_BUS_VTABLE_END} {
        sd_bus* opened = nullptr;
        check(sd_bus_new(&opened), "new");
        bus.reset(opened);
        check(sd_bus_set_address(opened, busAddress.c_str()), "address");
        check(sd_bus_set_bus_client(opened, 1), "client");
        check(sd_bus_start(opened), "start");
        check(sd_bus_add_object_vtable(opened, nullptr, names.object, names.interface, vtable,
                                       &isClosed),
              "object");
        check(sd_bus_request_name(opened, names.service, 0), "name");
        thread = std::thread([this] { serve(); });
    }

    ~Served() {
        isEnding = true;
        thread.join();
    }

    void serve() {
        bool told = isClosed;
        while (!isEnding) {
            if (isHanging) {
                std::this_thread::sleep_for(std::chrono::microseconds(turnMicroseconds));
                continue;
            }
            if (emits && told != isClosed) {
                told = !told;
                sd_bus_emit_properties_changed(bus.get(), names.object, names.interface,
                                               names.property, nullptr);
            }
            if (sd_bus_process(bus.get(), nullptr) == 0) {
                sd_bus_wait(bus.get(), turnMicroseconds);
            }
        }
    }

    const Names names;
    const bool emits;
    std::atomic<bool> isClosed;
    std::atomic<bool> isHanging = false;
    std::atomic<bool> isEnding = false;
    const sd_bus_vtable vtable[3];
    std::unique_ptr<sd_bus, CloseBus> bus;
    std::thread thread;
};

LidService::LidService(const std::string& busAddress, Kind kind, bool isClosed)
    : served_(std::make_unique<Served>(busAddress, kind, isClosed)) {}

LidService::~LidService() = default;

void LidService::setClosed(bool isClosed) {
    served_->isClosed = isClosed;
}

void LidService::hang() {
    served_->isHanging = true;
}

}  // namespace tavrel::support
