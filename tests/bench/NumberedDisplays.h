#pragma once

#include <memory>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"

namespace tavrel::bench {

/// Displays with the numbers from 1 on, of which the first is built in, all online and active.
/// Answering costs next to nothing, so what is measured is whoever asks.
class NumberedDisplays : public DisplayQueries {
public:
    explicit NumberedDisplays(std::size_t count) : displays_(count) {
        std::iota(displays_.begin(), displays_.end(), DisplayID{1});
    }

    const std::vector<DisplayID>& all() const { return displays_; }

    std::unique_ptr<DisplayMoment> now() override { return std::make_unique<Moment>(displays_); }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return now(); }

private:
    class Moment : public DisplayMoment {
    public:
        explicit Moment(std::vector<DisplayID> displays) : displays_(std::move(displays)) {}

        std::optional<std::vector<DisplayID>> allDisplays() override { return displays_; }
        std::optional<std::vector<DisplayID>> onlineDisplays() override { return displays_; }
        bool isBuiltIn(DisplayID display) override { return display == 1; }
        bool isOnline(DisplayID display) override { return isOneOfThem(display); }
        bool isActive(DisplayID display) override { return isOneOfThem(display); }
        std::uint32_t vendorNumber(DisplayID display) override { return display; }
        std::uint32_t modelNumber(DisplayID display) override { return display; }
        std::uint32_t serialNumber(DisplayID display) override { return display; }

    private:
        bool isOneOfThem(DisplayID display) const {
            return display > 0 && display <= displays_.size();
        }

        const std::vector<DisplayID> displays_;
    };

    std::vector<DisplayID> displays_;
};

}  // namespace tavrel::bench
