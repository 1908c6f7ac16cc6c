#include "platform/LidAwareDisplays.h"

#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"

namespace tavrel {

namespace {

/// A moment under a closed lid.
class UnderTheLid final : public ForwardingMoment {
public:
    using ForwardingMoment::ForwardingMoment;

    std::optional<std::vector<DisplayID>> onlineDisplays() override {
        auto online = ForwardingMoment::onlineDisplays();
        if (online.has_value()) {
            std::erase_if(*online, [this](DisplayID each) { return isBuiltIn(each); });
        }
        return online;
    }
    bool isOnline(DisplayID display) override {
        return !isBuiltIn(display) && ForwardingMoment::isOnline(display);
    }
    bool isActive(DisplayID display) override {
        return !isBuiltIn(display) && ForwardingMoment::isActive(display);
    }
};

/// The lid is asked last: the server may have taken seconds to answer.
std::unique_ptr<DisplayMoment> under(const Lid& lid, std::unique_ptr<DisplayMoment> moment) {
    if (!lid.isClosed()) {
        return moment;
    }
    return std::make_unique<UnderTheLid>(std::move(moment));
}

}  // namespace

std::unique_ptr<DisplayMoment> LidAwareQueries::now() {
    return under(lid_, inner_.now());
}

std::unique_ptr<DisplayMoment> LidAwareQueries::lately() {
    return under(lid_, inner_.lately());
}

std::unique_ptr<DisplayMoment> LidAwareQueries::nowAfterProbing() {
    return under(lid_, inner_.nowAfterProbing());
}

LidAwareReports::LidAwareReports(ReconfigurationReports& inner, Lid& lid)
    : inner_(inner), lid_(lid) {
    lid_.observe([this] {
        constexpr DisplayID noneInParticular = 0;
        registered_.report(noneInParticular, displayChange::desktopShapeChanged);
    });
}

LidAwareReports::~LidAwareReports() {
    lid_.observe(nullptr);
}

ServerStatus LidAwareReports::registerCallback(DisplayReconfigurationCallback callback,
                                               void* userInfo) {
    const ServerStatus status = inner_.registerCallback(callback, userInfo);
    return status == serverStatus::success ? registered_.add(callback, userInfo) : status;
}

ServerStatus LidAwareReports::removeCallback(DisplayReconfigurationCallback callback,
                                             void* userInfo) {
    const ServerStatus status = inner_.removeCallback(callback, userInfo);
    registered_.remove(callback, userInfo);
    return status;
}

}  // namespace tavrel
