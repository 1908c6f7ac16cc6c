#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
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

    std::unique_ptr<DisplayMoment> now() override {
        return std::make_unique<Moment>(*this, inner_.now());
    }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override {
        return std::make_unique<Moment>(*this, inner_.nowAfterProbing());
    }

private:
    class Moment : public ForwardingMoment {
    public:
        Moment(FaultyQueries& queries, std::unique_ptr<DisplayMoment> inner)
            : ForwardingMoment(std::move(inner)), queries_(queries) {}

        std::optional<std::vector<DisplayID>> allDisplays() override {
            return queries_.chance_.happens(queries_.listFailures_)
                       ? std::nullopt
                       : ForwardingMoment::allDisplays();
        }

    private:
        FaultyQueries& queries_;
    };

    DisplayQueries& inner_;
    Chance chance_;
    unsigned listFailures_ = 0;
};

}  // namespace tavrel
