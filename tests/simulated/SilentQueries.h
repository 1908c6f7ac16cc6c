#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"

namespace tavrel {

/// A fault decorator: a server that falls silent, so that what it said last is all there is.
class SilentQueries : public DisplayQueries {
public:
    /// `inner` must outlive it.
    explicit SilentQueries(DisplayQueries& inner) : inner_(inner) {}

    /// The last word is about the displays that it lists then, and about `unlisted` ones.
    void fallSilent(const std::vector<DisplayID>& unlisted = {}) {
        lastWord_ = reportOf(*inner_.now(), unlisted);
    }
    void speak() { lastWord_.reset(); }
    bool isSilent() const { return lastWord_.has_value(); }

    /// What happens in the world while somebody waits for the server to look for monitors, and
    /// so to speak.
    std::function<void()> whileAwaited = [] {};

    std::unique_ptr<DisplayMoment> now() override {
        return lastWord_ ? std::make_unique<LastWord>(*lastWord_) : inner_.now();
    }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override {
        whileAwaited();
        return now();
    }

private:
    using List = std::optional<std::vector<DisplayID>>;

    struct Answers {
        bool isBuiltIn = false;
        bool isOnline = false;
        bool isActive = false;
        std::uint32_t vendorNumber = 0;
        std::uint32_t modelNumber = 0;
        std::uint32_t serialNumber = 0;
    };

    struct Report {
        List all;
        List online;
        std::map<DisplayID, Answers> displays;
    };

    static Report reportOf(DisplayMoment& moment, std::vector<DisplayID> displays) {
        Report report{
            .all = moment.allDisplays(), .online = moment.onlineDisplays(), .displays = {}};
        for (const List& list : {report.all, report.online}) {
            const auto listed = list.value_or(std::vector<DisplayID>{});
            displays.insert(displays.end(), listed.begin(), listed.end());
        }
        for (const DisplayID display : displays) {
            report.displays[display] = {.isBuiltIn = moment.isBuiltIn(display),
                                        .isOnline = moment.isOnline(display),
                                        .isActive = moment.isActive(display),
                                        .vendorNumber = moment.vendorNumber(display),
                                        .modelNumber = moment.modelNumber(display),
                                        .serialNumber = moment.serialNumber(display)};
        }
        return report;
    }

    class LastWord : public DisplayMoment {
    public:
        explicit LastWord(Report report) : report_(std::move(report)) {}

        bool isCurrent() override { return false; }
        List allDisplays() override { return report_.all; }
        List onlineDisplays() override { return report_.online; }
        bool isBuiltIn(DisplayID display) override { return of(display).isBuiltIn; }
        bool isOnline(DisplayID display) override { return of(display).isOnline; }
        bool isActive(DisplayID display) override { return of(display).isActive; }
        std::uint32_t vendorNumber(DisplayID display) override { return of(display).vendorNumber; }
        std::uint32_t modelNumber(DisplayID display) override { return of(display).modelNumber; }
        std::uint32_t serialNumber(DisplayID display) override { return of(display).serialNumber; }

    private:
        Answers of(DisplayID display) const {
            const auto found = report_.displays.find(display);
            return found == report_.displays.end() ? Answers{} : found->second;
        }

        const Report report_;
    };

    DisplayQueries& inner_;
    std::optional<Report> lastWord_;
};

}  // namespace tavrel
