#include "tests/support/SessionManager.h"

#include <X11/SM/SMlib.h>
// In this order: the second header needs the first.
#include <X11/ICE/ICEutil.h>
#include <poll.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

namespace tavrel::support {

namespace {

/// How long one wait for messages lasts, so that the end or a log-out is noticed.
constexpr int pollMilliseconds = 20;

/// Frees what the session-management library hands out with malloc.
void release(void* memory) {
    std::free(memory);  // NOLINT(cppcoreguidelines-no-malloc): the library's contract.
}

}  // namespace

/// Uses the session-management library on one thread only, as it requires.
class SessionManager::Impl {
public:
    Impl() {
        // By default, the library ends this process when a program just closes its connection.
        IceSetIOErrorHandler([](IceConn) {});
        std::array<char, 256> error{};
        // The library takes the name as a non-const pointer.
        std::string vendor = "tests";
        std::string version = "1";
        SmsInitialize(vendor.data(), version.data(), newClient, this, anybody, error.size(),
                      error.data());
        if (IceListenForConnections(&listenCount_, &listeners_, error.size(), error.data()) == 0) {
            throw std::runtime_error(std::string("cannot listen for programs: ") + error.data());
        }
        for (int index = 0; index < listenCount_; ++index) {
            IceSetHostBasedAuthProc(listeners_[index], anybody);
        }
        char* list = IceComposeNetworkIdList(listenCount_, listeners_);
        address = list;
        release(list);
        thread_ = std::thread([this] { serve(); });
    }

    ~Impl() {
        ending_ = true;
        thread_.join();
        while (!connections_.empty()) {
            forget(connections_.front());
        }
        IceFreeListenObjs(listenCount_, listeners_);
    }

    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    std::string address;
    std::atomic<bool> hasClient = false;
    std::atomic<bool> loggingOut = false;

private:
    static Bool anybody(char* /*host*/) { return True; }

    static Status newClient(SmsConn client, SmPointer self, unsigned long* mask,
                            SmsCallbacks* callbacks, char** /*reason*/) {
        static_cast<Impl*>(self)->clients_.push_back(client);
        *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
                SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask |
                SmsSaveYourselfDoneProcMask | SmsCloseConnectionProcMask |
                SmsSetPropertiesProcMask | SmsDeletePropertiesProcMask | SmsGetPropertiesProcMask;
        callbacks->register_client = {registerClient, self};
        callbacks->interact_request = {[](SmsConn each, SmPointer, int) { SmsInteract(each); },
                                       self};
        callbacks->interact_done = {[](SmsConn, SmPointer, Bool) {}, self};
        callbacks->save_yourself_request = {[](SmsConn, SmPointer, int, Bool, int, Bool, Bool) {},
                                            self};
        callbacks->save_yourself_phase2_request = {
            [](SmsConn each, SmPointer) { SmsSaveYourselfPhase2(each); }, self};
        callbacks->save_yourself_done = {saved, self};
        callbacks->close_connection = {closed, self};
        callbacks->set_properties = {[](SmsConn, SmPointer, int count, SmProp** properties) {
                                         for (int index = 0; index < count; ++index) {
                                             SmFreeProperty(properties[index]);
                                         }
                                         release(properties);
                                     },
                                     self};
        callbacks->delete_properties = {[](SmsConn, SmPointer, int count, char** names) {
                                            for (int index = 0; index < count; ++index) {
                                                release(names[index]);
                                            }
                                            release(names);
                                        },
                                        self};
        callbacks->get_properties = {
            [](SmsConn each, SmPointer) { SmsReturnProperties(each, 0, nullptr); }, self};
        return 1;
    }

    static Status registerClient(SmsConn client, SmPointer /*self*/, char* previous) {
        release(previous);
        char* identifier = SmsGenerateClientID(client);
        SmsRegisterClientReply(client, identifier);
        release(identifier);
        SmsSaveYourself(client, SmSaveLocal, False, SmInteractStyleNone, False);
        return 1;
    }

    static void saved(SmsConn client, SmPointer self, Bool /*success*/) {
        auto& impl = *static_cast<Impl*>(self);
        if (impl.askedToSave_) {
            SmsDie(client);
            return;
        }
        SmsSaveComplete(client);
        impl.hasClient = true;
    }

    static void closed(SmsConn client, SmPointer self, int count, char** reasons) {
        SmFreeReasons(count, reasons);
        static_cast<Impl*>(self)->forget(SmsGetIceConnection(client));
    }

    void forget(IceConn connection) {
        std::erase_if(clients_, [&](SmsConn client) {
            const bool isHere = SmsGetIceConnection(client) == connection;
            if (isHere) {
                SmsCleanUp(client);
            }
            return isHere;
        });
        std::erase(connections_, connection);
        IceSetShutdownNegotiation(connection, False);
        IceCloseConnection(connection);
    }

    void serve() {
        while (!ending_) {
            std::vector<pollfd> sources;
            sources.reserve(static_cast<std::size_t>(listenCount_) + connections_.size());
            for (int index = 0; index < listenCount_; ++index) {
                sources.push_back({IceGetListenConnectionNumber(listeners_[index]), POLLIN, 0});
            }
            for (IceConn connection : connections_) {
                sources.push_back({IceConnectionNumber(connection), POLLIN, 0});
            }
            poll(sources.data(), sources.size(), pollMilliseconds);
            handle(sources);
            if (loggingOut && !askedToSave_) {
                askedToSave_ = true;
                for (SmsConn client : clients_) {
                    SmsSaveYourself(client, SmSaveBoth, True, SmInteractStyleNone, False);
                }
            }
        }
    }

    void handle(const std::vector<pollfd>& sources) {
        const auto listeners = static_cast<std::size_t>(listenCount_);
        const std::vector<IceConn> connections = connections_;
        for (std::size_t index = 0; index < sources.size(); ++index) {
            if (sources[index].revents == 0) {
                continue;
            }
            if (index < listeners) {
                IceAcceptStatus status{};
                if (IceConn connection = IceAcceptConnection(listeners_[index], &status)) {
                    connections_.push_back(connection);
                }
            } else {
                process(connections[index - listeners]);
            }
        }
    }

    void process(IceConn connection) {
        if (IceProcessMessages(connection, nullptr, nullptr) == IceProcessMessagesIOError) {
            forget(connection);
        }
    }

    int listenCount_ = 0;
    IceListenObj* listeners_ = nullptr;
    std::vector<IceConn> connections_;
    std::vector<SmsConn> clients_;
    bool askedToSave_ = false;
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

SessionManager::SessionManager() : impl_(std::make_unique<Impl>()) {}
SessionManager::~SessionManager() = default;

const std::string& SessionManager::address() const {
    return impl_->address;
}

bool SessionManager::hasClient() const {
    return impl_->hasClient;
}

void SessionManager::logOut() {
    impl_->loggingOut = true;
}

}  // namespace tavrel::support
