#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/DisplayQueries.h"
#include "tests/simulated/Chance.h"

namespace tavrel {

/// A fault decorator: the list of all displays fails at random.
class FaultyQueries : public DisplayQueries {
public:
    /// `inner` must outlive it.
    FaultyQueries(DisplayQueries& inner, std::uint64_t seed) : inner_(inner), chance_(seed) {}

    /// How many of 100 lists fail from now on.
    void setListFailures(unsigned outOfHundred) { listFailures_ = outOfHundred; }

    std::unique_ptr<DisplayMoment> now() override { return std::make_unique<Moment>(*this); }

private:
    class Moment : public DisplayMoment {
    public:
        explicit Moment(FaultyQueries& queries) : queries_(queries), inner_(queries.inner_.now()) {}

        bool isCurrent() override { return inner_->isCurrent(); }
        std::optional<std::vector<DisplayID>> allDisplays() override {
            return queries_.chance_.happens(queries_.listFailures_) ? std::nullopt
                                                                    : inner_->allDisplays();
        }
        std::optional<std::vector<DisplayID>> onlineDisplays() override {
            return inner_->onlineDisplays();
        }
        bool isBuiltIn(DisplayID display) override { return inner_->isBuiltIn(display); }
        bool isOnline(DisplayID display) override { return inner_->isOnline(display); }
        bool isActive(DisplayID display) override { return inner_->isActive(display); }
        std::uint32_t vendorNumber(DisplayID display) override {
            return inner_->vendorNumber(display);
        }
        std::uint32_t modelNumber(DisplayID display) override {
            return inner_->modelNumber(display);
        }
        std::uint32_t serialNumber(DisplayID display) override {
            return inner_->serialNumber(display);
        }

    private:
        FaultyQueries& queries_;
        std::unique_ptr<DisplayMoment> inner_;
    };

    DisplayQueries& inner_;
    Chance chance_;
    unsigned listFailures_ = 0;
};

}  // namespace tavrel
