#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/simulated/ScriptedSwitch.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/ui/Situations.h"
#include "tests/ui/WidgetTest.h"
#include "ui/DisplayControlView.h"

namespace tavrel {

/// The real view and controller on a simulated platform, which has no displays but those
/// that a test gives it.
class ViewTest : public WidgetTest {
protected:
    ViewTest()
        : controller(DisplayController::create(
              {lifecycle, system.windowServer, system.windowServer, system.userDefaults,
               system.wallClock, system.scheduler.mainQueue(), system.scheduler.backgroundQueue(),
               system.notificationCenter})) {
        system.scheduler.settle();
    }

    ~ViewTest() override {
        view.reset();
        controller.reset();
        system.scheduler.shutDown();
    }

    /// Opens the window on a controller in `situation`.
    void open(const Situation& situation) {
        show(*controller, situation);
        openView();
    }
    void open(std::vector<DisplayDevice> displays) {
        open(Situation{.displays = std::move(displays)});
    }

    /// Opens the window on simulated displays, as the application does when it starts.
    void openOnDesk(const std::vector<SimulatedDisplay>& displays) {
        for (const SimulatedDisplay& display : displays) {
            system.windowServer.connect(display);
        }
        controller->refresh(std::nullopt);
        system.scheduler.settle();
        system.windowServer.takeChanges();
        openView();
    }

    void openView() {
        view = std::make_unique<DisplayControlView>(controller);
        showActive(*view);
    }

    /// Lets all simulated work happen and the window show it.
    void settle() {
        system.scheduler.settle();
        turn();
    }

    /// What the controller says from now on, as the window shows it.
    void setDisplays(std::vector<DisplayDevice> displays) {
        controller->setDisplays(std::move(displays));
        turn();
    }
    void setStatus(const std::string& status) {
        controller->setStatusMessage(status);
        turn();
    }
    void setError(const std::optional<std::string>& error) {
        controller->setErrorMessage(error);
        turn();
    }

    /// The first visible widget of this kind that matches, null when there is none.
    template <class Widget>
    Widget* visible(const std::function<bool(const Widget&)>& matches = nullptr) const {
        for (Widget* each : view->findChildren<Widget*>()) {
            if (each->isVisible() && (!matches || matches(*each))) {
                return each;
            }
        }
        return nullptr;
    }
    Label* text(const QString& content) const {
        return visible<Label>([&](const Label& each) { return each.text() == content; });
    }

    std::vector<DisplayRow*> rows() const { return visible<RowList>()->rows(); }
    DisplayRow& row(std::size_t index) const { return *rows().at(index); }
    Switch& powerSwitch(std::size_t index) const { return *row(index).powerSwitch(); }
    RefreshButton& refreshButton() const { return *visible<RefreshButton>(); }
    WakeButton& wakeButton() const { return *visible<WakeButton>(); }
    QWidget* focused() const { return view->focusWidget(); }

    QImage picture() const { return view->grab().toImage(); }

    SimulatedPlatform system;
    ScriptedSwitch lifecycle{system.windowServer, system.scheduler};
    std::shared_ptr<DisplayController> controller;
    std::unique_ptr<DisplayControlView> view;
};

}  // namespace tavrel
