#pragma once

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/ReconfigurationReports.h"

namespace tavrel {

/// A desktop whose window server can neither be asked for displays nor told which to use.
///
/// What is remembered from elsewhere can be listed, and counts as on: nobody here has switched
/// it off, and somebody is looking at the window. So nothing is ever missed, and nothing is
/// tried that cannot work.
class NoWindowServer final : public DisplaySwitch, public DisplayQueries {
public:
    bool canSwitch() override { return false; }
    /// Returns 1006.
    ServerStatus setDisplayEnabled(DisplayID /*display*/, bool /*enabled*/) override {
        return serverStatus::notImplemented;
    }

    std::unique_ptr<DisplayMoment> now() override { return std::make_unique<Moment>(); }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return now(); }

private:
    class Moment final : public DisplayMoment {
    public:
        std::optional<std::vector<DisplayID>> allDisplays() override { return std::nullopt; }
        std::optional<std::vector<DisplayID>> onlineDisplays() override {
            return std::vector<DisplayID>{};
        }
        bool isBuiltIn(DisplayID /*display*/) override { return false; }
        bool isOnline(DisplayID /*display*/) override { return true; }
        bool isActive(DisplayID /*display*/) override { return true; }
        std::uint32_t vendorNumber(DisplayID /*display*/) override { return 0; }
        std::uint32_t modelNumber(DisplayID /*display*/) override { return 0; }
        std::uint32_t serialNumber(DisplayID /*display*/) override { return 0; }
    };
};

/// Where nothing is reported.
class NoReports final : public ReconfigurationReports {
public:
    ServerStatus registerCallback(DisplayReconfigurationCallback /*callback*/,
                                  void* /*userInfo*/) override {
        return serverStatus::notImplemented;
    }
    ServerStatus removeCallback(DisplayReconfigurationCallback /*callback*/,
                                void* /*userInfo*/) override {
        return serverStatus::illegalArgument;
    }
};

}  // namespace tavrel
