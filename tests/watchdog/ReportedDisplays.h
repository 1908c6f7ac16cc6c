#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"

namespace tavrel::watchdog {

/// Answers about displays that a test has written down: which are online, and whether each is
/// active. At first the server does not say. Thread-safe.
class ReportedDisplays : public DisplayQueries {
public:
    using Report = std::optional<std::map<DisplayID, bool>>;

    /// From now on; std::nullopt while the server does not say.
    void say(Report report) {
        const std::lock_guard lock(mutex_);
        report_ = std::move(report);
        isCurrent_ = true;
    }
    /// From now on the server is silent, and what it said last is repeated.
    void fallSilent() {
        const std::lock_guard lock(mutex_);
        isCurrent_ = false;
    }

    std::unique_ptr<DisplayMoment> now() override {
        const std::lock_guard lock(mutex_);
        return std::make_unique<Moment>(report_, isCurrent_);
    }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return now(); }

private:
    class Moment : public DisplayMoment {
    public:
        Moment(Report report, bool isCurrent) : report_(std::move(report)), isCurrent_(isCurrent) {}

        bool isCurrent() override { return isCurrent_; }
        std::optional<std::vector<DisplayID>> allDisplays() override { return onlineDisplays(); }
        std::optional<std::vector<DisplayID>> onlineDisplays() override {
            if (!report_) {
                return std::nullopt;
            }
            std::vector<DisplayID> online;
            for (const auto& [display, isActive] : *report_) {
                online.push_back(display);
            }
            return online;
        }
        bool isBuiltIn(DisplayID /*display*/) override { return false; }
        bool isOnline(DisplayID display) override { return report_ && report_->contains(display); }
        bool isActive(DisplayID display) override {
            return isOnline(display) && report_->at(display);
        }
        std::uint32_t vendorNumber(DisplayID /*display*/) override { return 0; }
        std::uint32_t modelNumber(DisplayID /*display*/) override { return 0; }
        std::uint32_t serialNumber(DisplayID /*display*/) override { return 0; }

    private:
        const Report report_;
        const bool isCurrent_;
    };

    std::mutex mutex_;
    Report report_;
    bool isCurrent_ = true;
};

}  // namespace tavrel::watchdog
