#pragma once

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

    void fallSilent() {
        const auto moment = inner_.now();
        lastWord_.emplace();
        for (const DisplayID display :
             moment->onlineDisplays().value_or(std::vector<DisplayID>{})) {
            lastWord_->emplace(display, moment->isActive(display));
        }
    }
    void speak() { lastWord_.reset(); }

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
    using Report = std::map<DisplayID, bool>;

    class LastWord : public DisplayMoment {
    public:
        explicit LastWord(Report report) : report_(std::move(report)) {}

        bool isCurrent() override { return false; }
        std::optional<std::vector<DisplayID>> allDisplays() override { return onlineDisplays(); }
        std::optional<std::vector<DisplayID>> onlineDisplays() override {
            std::vector<DisplayID> online;
            for (const auto& [display, isActive] : report_) {
                online.push_back(display);
            }
            return online;
        }
        bool isBuiltIn(DisplayID /*display*/) override { return false; }
        bool isOnline(DisplayID display) override { return report_.contains(display); }
        bool isActive(DisplayID display) override {
            return isOnline(display) && report_.at(display);
        }
        std::uint32_t vendorNumber(DisplayID /*display*/) override { return 0; }
        std::uint32_t modelNumber(DisplayID /*display*/) override { return 0; }
        std::uint32_t serialNumber(DisplayID /*display*/) override { return 0; }

    private:
        const Report report_;
    };

    DisplayQueries& inner_;
    std::optional<Report> lastWord_;
};

}  // namespace tavrel
