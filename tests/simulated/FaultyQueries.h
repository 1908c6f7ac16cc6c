#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"

namespace tavrel {

/// A fault decorator: the list of all displays fails, by chance drawn from a seed.
class FaultyQueries : public DisplayQueries {
public:
    /// `inner` must outlive it.
    FaultyQueries(DisplayQueries& inner, std::uint64_t seed) : inner_(inner), random_(seed) {}

    /// Of 100 lists, how many fail from now on.
    void setListFailures(unsigned outOfHundred) { listFailures_ = outOfHundred; }

    std::unique_ptr<DisplayMoment> now() override { return std::make_unique<Moment>(*this); }

private:
    class Moment : public DisplayMoment {
    public:
        explicit Moment(FaultyQueries& queries) : queries_(queries), inner_(queries.inner_.now()) {}

        std::optional<std::vector<DisplayID>> allDisplays() override {
            return queries_.listFails() ? std::nullopt : inner_->allDisplays();
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

    bool listFails() { return listFailures_ != 0 && random_() % 100 < listFailures_; }

    DisplayQueries& inner_;
    std::mt19937_64 random_;
    unsigned listFailures_ = 0;
};

}  // namespace tavrel
