#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"

namespace tavrel {

/// A moment that answers as another one does: the base of those that change some answers.
class ForwardingMoment : public DisplayMoment {
public:
    explicit ForwardingMoment(std::unique_ptr<DisplayMoment> inner) : inner_(std::move(inner)) {}

    bool isCurrent() override { return inner_->isCurrent(); }
    std::optional<std::vector<DisplayID>> allDisplays() override { return inner_->allDisplays(); }
    std::optional<std::vector<DisplayID>> onlineDisplays() override {
        return inner_->onlineDisplays();
    }
    bool isBuiltIn(DisplayID display) override { return inner_->isBuiltIn(display); }
    bool isOnline(DisplayID display) override { return inner_->isOnline(display); }
    bool isActive(DisplayID display) override { return inner_->isActive(display); }
    std::uint32_t vendorNumber(DisplayID display) override { return inner_->vendorNumber(display); }
    std::uint32_t modelNumber(DisplayID display) override { return inner_->modelNumber(display); }
    std::uint32_t serialNumber(DisplayID display) override { return inner_->serialNumber(display); }
    DisplayHardware hardware(DisplayID display) override { return inner_->hardware(display); }

private:
    std::unique_ptr<DisplayMoment> inner_;
};

}  // namespace tavrel
