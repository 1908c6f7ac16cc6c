#include "platform/LidAwareDisplays.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace tavrel {

namespace {

/// A moment under a closed lid.
class UnderTheLid final : public DisplayMoment {
public:
    explicit UnderTheLid(std::unique_ptr<DisplayMoment> inner) : inner_(std::move(inner)) {}

    bool isCurrent() override { return inner_->isCurrent(); }
    std::optional<std::vector<DisplayID>> allDisplays() override { return inner_->allDisplays(); }
    std::optional<std::vector<DisplayID>> onlineDisplays() override {
        auto online = inner_->onlineDisplays();
        if (online.has_value()) {
            std::erase_if(*online, [this](DisplayID each) { return isBuiltIn(each); });
        }
        return online;
    }
    bool isBuiltIn(DisplayID display) override { return inner_->isBuiltIn(display); }
    bool isOnline(DisplayID display) override {
        return !isBuiltIn(display) && inner_->isOnline(display);
    }
    bool isActive(DisplayID display) override {
        return !isBuiltIn(display) && inner_->isActive(display);
    }
    std::uint32_t vendorNumber(DisplayID display) override { return inner_->vendorNumber(display); }
    std::uint32_t modelNumber(DisplayID display) override { return inner_->modelNumber(display); }
    std::uint32_t serialNumber(DisplayID display) override { return inner_->serialNumber(display); }

private:
    std::unique_ptr<DisplayMoment> inner_;
};

std::unique_ptr<DisplayMoment> under(bool isClosed, std::unique_ptr<DisplayMoment> moment) {
    if (!isClosed) {
        return moment;
    }
    return std::make_unique<UnderTheLid>(std::move(moment));
}

}  // namespace

std::unique_ptr<DisplayMoment> LidAwareQueries::now() {
    const bool isClosed = lid_.isClosed();
    return under(isClosed, inner_.now());
}

std::unique_ptr<DisplayMoment> LidAwareQueries::nowAfterProbing() {
    const bool isClosed = lid_.isClosed();
    return under(isClosed, inner_.nowAfterProbing());
}

LidAwareReports::LidAwareReports(ReconfigurationReports& inner, Lid& lid)
    : inner_(inner), lid_(lid) {
    lid_.observe([this] { reportLid(); });
}

LidAwareReports::~LidAwareReports() {
    lid_.observe(nullptr);
}

ServerStatus LidAwareReports::registerCallback(DisplayReconfigurationCallback callback,
                                               void* userInfo) {
    const ServerStatus status = inner_.registerCallback(callback, userInfo);
    if (status == serverStatus::success) {
        const std::lock_guard lock(mutex_);
        registered_ = Registration(callback, userInfo);
    }
    return status;
}

ServerStatus LidAwareReports::removeCallback(DisplayReconfigurationCallback callback,
                                             void* userInfo) {
    const ServerStatus status = inner_.removeCallback(callback, userInfo);
    const std::lock_guard lock(mutex_);
    if (registered_ == Registration(callback, userInfo)) {
        registered_.reset();
    }
    return status;
}

void LidAwareReports::reportLid() {
    const std::lock_guard lock(mutex_);
    // A copy, since the callback may end its own registration.
    if (const std::optional<Registration> registered = registered_) {
        constexpr DisplayID noneInParticular = 0;
        registered->first(noneInParticular, displayChange::desktopShapeChanged, registered->second);
    }
}

}  // namespace tavrel
