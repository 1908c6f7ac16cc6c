#include "tests/simulation/WatchModel.h"

#include <algorithm>
#include <utility>

#include "tests/simulation/Invariants.h"

namespace tavrel::simulation {

namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t begin = 0x1;
constexpr std::uint32_t addOrRemove = 0x30;

}  // namespace

WatchModel::WatchModel(SimulatedPlatform& system, MainQueue& mainQueue,
                       ReconfigurationReports& reports,
                       std::shared_ptr<DisplayController> controller, Invariants& invariants)
    : system_(system),
      mainQueue_(mainQueue),
      reports_(reports),
      controller_(std::move(controller)),
      invariants_(invariants),
      alive_(std::make_shared<WatchModel*>(this)) {
    reports_.registerCallback(receive, this);
}

WatchModel::~WatchModel() {
    *alive_ = nullptr;
    reports_.removeCallback(receive, this);
}

void WatchModel::receive(DisplayID /*display*/, std::uint32_t flags, void* userInfo) {
    auto& self = *static_cast<WatchModel*>(userInfo);
    self.mainQueue_.async([alive = self.alive_, flags] {
        if (*alive != nullptr) {
            (*alive)->handle(flags);
        }
    });
}

void WatchModel::handle(std::uint32_t flags) {
    if ((flags & begin) != 0) {
        return;
    }
    if ((flags & addOrRemove) == 0 ||
        system_.wallClock.now() < controller_->suppressTopologyRestoreUntil()) {
        mainQueue_.asyncAfter(350ms, [alive = alive_] {
            if (*alive != nullptr) {
                (*alive)->expectCheck();
            }
        });
        return;
    }
    if (stored_ != nullptr) {
        stored_->isCancelled = true;
    }
    stored_ = std::make_shared<Recovery>(Recovery{system_.scheduler.now() + 600ms});
    recoveries_.push_back(stored_);
    mainQueue_.asyncAfter(600ms, [alive = alive_, recovery = stored_] {
        if (*alive != nullptr && !recovery->isCancelled) {
            (*alive)->expectRecovery();
        }
    });
}

bool WatchModel::recoveryIsDueNow() const {
    const Delay now = system_.scheduler.now();
    return std::any_of(recoveries_.begin(), recoveries_.end(), [&](const auto& recovery) {
        return !recovery->isCancelled && recovery->due == now;
    });
}

void WatchModel::noteHang() {
    for (const auto& recovery : recoveries_) {
        recovery->due = std::max(recovery->due, system_.scheduler.now());
    }
}

void WatchModel::expectRecovery() {
    const Delay now = system_.scheduler.now();
    std::erase_if(recoveries_, [&](const auto& recovery) { return recovery->due < now; });
    if (!invariants_.storedIsOrWasEmptyNow() && !controller_->isAutomaticRecoveryRunning()) {
        invariants_.fail("a display was added or removed, and no restoration followed");
    }
}

void WatchModel::expectCheck() {
    if (!invariants_.storedIsOrWasEmptyNow() && !invariants_.someRememberedIsUsable() &&
        !controller_->isAutomaticRecoveryRunning()) {
        invariants_.fail("a report came, nothing was usable, and no restoration followed");
    }
}

}  // namespace tavrel::simulation
