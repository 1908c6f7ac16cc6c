#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tavrel::support {

/// A connection to a message bus with a thread of its own, for programs that a test puts in the
/// place of a desktop's.
class BusService {
public:
    /// Throws std::runtime_error when the bus refuses.
    explicit BusService(const std::string& busAddress) {
        sd_bus* opened = nullptr;
        check(sd_bus_new(&opened), "new");
        bus_.reset(opened);
        check(sd_bus_set_address(opened, busAddress.c_str()), "address");
        check(sd_bus_set_bus_client(opened, 1), "client");
        check(sd_bus_start(opened), "start");
    }
    /// Blocks until it has left the bus.
    ~BusService() { stop(); }
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    /// Before `start`.
    void add(const char* object, const char* interface, const sd_bus_vtable* methods, void* self) {
        check(sd_bus_add_object_vtable(bus_.get(), nullptr, object, interface, methods, self),
              interface);
    }

    /// Before `start`. Calls `handler` on the thread for each signal that matches.
    void hear(const std::string& match, sd_bus_message_handler_t handler, void* data) {
        check(sd_bus_add_match(bus_.get(), nullptr, match.c_str(), handler, data), match.c_str());
    }

    /// Takes the name, if it is to have one, and serves. `nameFlags` are the library's.
    void start(const char* name = nullptr, std::uint64_t nameFlags = 0) {
        if (name != nullptr) {
            check(sd_bus_request_name(bus_.get(), name, nameFlags), name);
        }
        thread_ = std::thread([this] { serve(); });
    }

    /// Ends serving; nothing of it runs any more.
    void stop() {
        isEnding_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    /// Runs `task` on the thread, soon.
    void post(std::function<void(sd_bus&)> task) {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }

private:
    struct CloseBus {
        void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
    };

    static void check(int result, const char* what) {
        if (result < 0) {
            throw std::runtime_error(std::string("no service on the bus: ") + what);
        }
    }

    void serve() {
        constexpr std::uint64_t turnMicroseconds = 5'000;
        while (!isEnding_) {
            std::vector<std::function<void(sd_bus&)>> tasks;
            {
                const std::lock_guard lock(mutex_);
                tasks.swap(tasks_);
            }
            for (const auto& task : tasks) {
                task(*bus_);
            }
            if (sd_bus_process(bus_.get(), nullptr) == 0) {
                sd_bus_wait(bus_.get(), turnMicroseconds);
            }
        }
    }

    std::atomic<bool> isEnding_ = false;
    std::mutex mutex_;
    std::vector<std::function<void(sd_bus&)>> tasks_;
    std::unique_ptr<sd_bus, CloseBus> bus_;
    std::thread thread_;
};

}  // namespace tavrel::support
