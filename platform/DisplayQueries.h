#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayID.h"

namespace tavrel {

/// What tells a display from others for people. Each is empty where nothing is known.
struct DisplayHardware {
    /// The monitor's maker and model.
    std::string monitor = {};
    /// What the window server calls the connector.
    std::string connector = {};

    friend bool operator==(const DisplayHardware&, const DisplayHardware&) = default;
};

/// The window server's answers about its displays, for one pass over them.
///
/// Where the server reports its whole state at once, all answers come from one snapshot,
/// taken when the moment was created. Where it answers display by display, each call asks it
/// again. So ask for a new moment after each change of the layout.
///
/// For one thread at a time. No call throws. A display the server does not know (any more)
/// is not built in, not online and not active. Its vendor, model and serial number mean nothing:
/// they are 0 on Linux, and 0xFFFFFFFF where a Mac's server answers.
class DisplayMoment {
public:
    virtual ~DisplayMoment() = default;

    /// Whether the answers are as of the time the moment was asked for. False when the server
    /// was silent then, and these are the ones it gave before: no ground for a change of the
    /// layout, nor for taking one to have happened.
    virtual bool isCurrent() { return true; }

    /// Every connected display, including those taken out of the desktop layout, in the
    /// server's order and possibly with entries that are not displays. std::nullopt when the
    /// system has no such list.
    virtual std::optional<std::vector<DisplayID>> allDisplays() = 0;

    /// The displays that are online, in the server's order. std::nullopt when the server
    /// cannot say.
    virtual std::optional<std::vector<DisplayID>> onlineDisplays() = 0;

    /// Whether this is the machine's own panel.
    virtual bool isBuiltIn(DisplayID display) = 0;
    /// Whether the display is connected and in the server's list of online displays.
    virtual bool isOnline(DisplayID display) = 0;
    /// Whether the display shows part of the desktop.
    virtual bool isActive(DisplayID display) = 0;

    virtual std::uint32_t vendorNumber(DisplayID display) = 0;
    virtual std::uint32_t modelNumber(DisplayID display) = 0;
    virtual std::uint32_t serialNumber(DisplayID display) = 0;

    /// Empty where the server does not tell.
    virtual DisplayHardware hardware(DisplayID /*display*/) { return {}; }
};

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

/// Whether anybody can see anything by these answers, current or not: whether any display is
/// online and active. std::nullopt when the server cannot say what is online.
inline std::optional<bool> hasUsableDisplay(DisplayMoment& moment) {
    const auto online = moment.onlineDisplays();
    if (!online) {
        return std::nullopt;
    }
    return std::any_of(online->begin(), online->end(),
                       [&](DisplayID display) { return moment.isActive(display); });
}

/// Where the window server is asked about its displays. Thread-safe.
class DisplayQueries {
public:
    virtual ~DisplayQueries() = default;

    /// Returns the answers as of now. Never null: when the server is gone, it is a moment that
    /// knows no display. Must not outlive this object.
    virtual std::unique_ptr<DisplayMoment> now() = 0;

    /// As `now`, for whoever asks each second whether all is well: what showed a fraction of a
    /// second ago may be the answer, if somebody could see something then. Whoever has changed the
    /// layout asks for `now`.
    virtual std::unique_ptr<DisplayMoment> lately() { return now(); }

    /// As `now`, but a server that answers from memory looks for monitors anew first. That can
    /// take seconds, in which it serves nobody: for when the user asks what there is, and not on
    /// the main thread.
    virtual std::unique_ptr<DisplayMoment> nowAfterProbing() = 0;
};

}  // namespace tavrel
