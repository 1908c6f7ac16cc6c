#include "platform/plasma/PlasmaReconfigurationReports.h"

#include <poll.h>

#include <array>
#include <future>
#include <utility>

#include "platform/layout/LayoutDiff.h"

namespace tavrel {

PlasmaReconfigurationReports::PlasmaReconfigurationReports(UserDefaults& store,
                                                           const PlasmaServerOptions& options)
    : directory_(store), link_(options, wakeUp_.descriptor()) {
    std::promise<void> started;
    std::future<void> hasStarted = started.get_future();
    thread_ = std::thread([this, &started] {
        if (const plasma::Session* session = link_.session()) {
            canWatch_ = true;
            reportNews(*session);
        }
        started.set_value();
        if (canWatch_) {
            run();
        }
    });
    hasStarted.wait();
}

PlasmaReconfigurationReports::~PlasmaReconfigurationReports() {
    isStopping_ = true;
    wakeUp_.wake();
    thread_.join();
}

ServerStatus PlasmaReconfigurationReports::registerCallback(DisplayReconfigurationCallback callback,
                                                            void* userInfo) {
    return canWatch_ ? registration_.add(callback, userInfo) : serverStatus::notImplemented;
}

ServerStatus PlasmaReconfigurationReports::removeCallback(DisplayReconfigurationCallback callback,
                                                          void* userInfo) {
    return registration_.remove(callback, userInfo);
}

void PlasmaReconfigurationReports::run() {
    const plasma::Session* session = link_.current();
    while (!isStopping_) {
        wait(session);
        if (session != nullptr) {
            session->connection->passOnArrived();
        }
        // A server that is only slow is not asked for anything, and keeps nobody waiting.
        if (session == nullptr || session->connection->isLost()) {
            session = link_.session();
            changesReported_ = 0;
        }
        if (session != nullptr) {
            reportNews(*session);
        }
    }
}

void PlasmaReconfigurationReports::reportNews(const plasma::Session& session) {
    const std::uint64_t changes = session.outputs->changes();
    if (std::exchange(changesReported_, changes) == changes) {
        return;
    }
    plasma::OutputState state = session.outputs->state();
    state.known = directory_.meet(plasma::identitiesIn(state));
    const std::optional<layout::Layout> before = std::exchange(reported_, plasma::layoutOf(state));
    if (!before.has_value()) {
        return;
    }
    for (const auto& change : layout::reportsBetween(*before, *reported_)) {
        registration_.report(change.display, change.flags);
    }
}

void PlasmaReconfigurationReports::wait(const plasma::Session* session) const {
    constexpr int forever = -1;
    /// How often to look for a server that went away.
    constexpr int retryMilliseconds = 1000;
    const bool isConnected = session != nullptr;
    std::array<pollfd, 2> sources{
        {{wakeUp_.descriptor(), POLLIN, 0},
         {isConnected ? session->connection->descriptor() : -1, POLLIN, 0}}};
    ::poll(sources.data(), sources.size(), isConnected ? forever : retryMilliseconds);
}

}  // namespace tavrel
