#include "platform/layout/LayoutMoment.h"

#include <cstdint>
#include <utility>

namespace tavrel::layout {

namespace {

using DisplayList = std::optional<std::vector<DisplayID>>;

class SilentMoment final : public DisplayMoment {
public:
    SilentMoment(DisplayList online, bool isCurrent)
        : online_(std::move(online)), isCurrent_(isCurrent) {}

    bool isCurrent() override { return isCurrent_; }
    DisplayList allDisplays() override { return std::nullopt; }
    DisplayList onlineDisplays() override { return online_; }
    bool isBuiltIn(DisplayID /*display*/) override { return false; }
    bool isOnline(DisplayID /*display*/) override { return false; }
    bool isActive(DisplayID /*display*/) override { return false; }
    std::uint32_t vendorNumber(DisplayID /*display*/) override { return 0; }
    std::uint32_t modelNumber(DisplayID /*display*/) override { return 0; }
    std::uint32_t serialNumber(DisplayID /*display*/) override { return 0; }

private:
    const DisplayList online_;
    const bool isCurrent_;
};

class LayoutMoment final : public DisplayMoment {
public:
    LayoutMoment(std::shared_ptr<const Layout> layout, bool isCurrent)
        : layout_(std::move(layout)), isCurrent_(isCurrent) {}

    bool isCurrent() override { return isCurrent_; }
    DisplayList allDisplays() override { return onlineDisplays(); }
    DisplayList onlineDisplays() override {
        std::vector<DisplayID> connected;
        for (const Output& output : layout_->outputs) {
            if (output.isConnected) {
                connected.push_back(output.display);
            }
        }
        return connected;
    }
    bool isBuiltIn(DisplayID display) override {
        const Output* output = find(display);
        return output != nullptr && output->isBuiltIn;
    }
    bool isOnline(DisplayID display) override { return find(display) != nullptr; }
    bool isActive(DisplayID display) override {
        const Output* output = find(display);
        return output != nullptr && output->shown.has_value();
    }
    std::uint32_t vendorNumber(DisplayID display) override { return edid(display).vendor; }
    std::uint32_t modelNumber(DisplayID display) override { return edid(display).product; }
    std::uint32_t serialNumber(DisplayID display) override { return edid(display).serial; }
    DisplayHardware hardware(DisplayID display) override {
        const Output* output = find(display);
        return output == nullptr ? DisplayHardware()
                                 : DisplayHardware{output->monitor, output->identity.connector};
    }

private:
    const Output* find(DisplayID display) const {
        const Output* output = layout_->output(display);
        return output != nullptr && output->isConnected ? output : nullptr;
    }
    EdidNumbers edid(DisplayID display) const {
        const Output* output = find(display);
        return output == nullptr ? EdidNumbers{} : output->identity.edid;
    }

    const std::shared_ptr<const Layout> layout_;
    const bool isCurrent_;
};

}  // namespace

std::unique_ptr<DisplayMoment> momentOf(Layout layout, bool isCurrent) {
    return momentOf(std::make_shared<const Layout>(std::move(layout)), isCurrent);
}

std::unique_ptr<DisplayMoment> momentOf(std::shared_ptr<const Layout> layout, bool isCurrent) {
    return std::make_unique<LayoutMoment>(std::move(layout), isCurrent);
}

std::unique_ptr<DisplayMoment> silentMoment(DisplayList online, bool isCurrent) {
    return std::make_unique<SilentMoment>(std::move(online), isCurrent);
}

bool showsAnything(DisplayMoment& moment) {
    return hasUsableDisplay(moment).value_or(false);
}

}  // namespace tavrel::layout
