#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/simulated/ScriptedLifecycle.h"
#include "platform/simulated/SimulatedPlatform.h"
#include "tests/ui/Situations.h"
#include "tests/ui/WidgetTest.h"
#include "ui/DisplayControlView.h"

namespace tavrel {

/// The real view on a real controller, on a simulated platform. The desk is empty, so
/// what is listed is only what a test says.
class ViewTest : public testing::Test {
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

    /// Opens the window in `situation`.
    void open(const Situation& situation) {
        show(*controller, situation);
        view = std::make_unique<DisplayControlView>(controller);
        showActive(*view);
    }
    void open(std::vector<DisplayDevice> displays) {
        open({.name = {}, .displays = std::move(displays), .status = "Ready", .error = {}});
    }

    /// Opens the window on a simulated desk with these displays, as at start.
    void openOnDesk(const std::vector<SimulatedDisplay>& displays) {
        for (const SimulatedDisplay& display : displays) {
            system.windowServer.connect(display);
        }
        controller->refresh(std::nullopt);
        system.scheduler.settle();
        system.windowServer.takeChanges();
        view = std::make_unique<DisplayControlView>(controller);
        showActive(*view);
    }

    /// Lets all simulated work happen and the window show it.
    void settle() {
        system.scheduler.settle();
        turn();
    }

    template <class Widget>
    Widget* visible() const {
        for (Widget* each : view->findChildren<Widget*>()) {
            if (each->isVisible()) {
                return each;
            }
        }
        return nullptr;
    }

    /// The texts that can be seen, from top to bottom as they were made.
    std::vector<QString> texts(const QWidget& in) const {
        std::vector<QString> result;
        for (const Label* each : in.findChildren<Label*>()) {
            if (each->isVisible()) {
                result.push_back(each->text());
            }
        }
        return result;
    }
    std::vector<QString> texts() const { return texts(*view); }

    Label* text(const QString& content) const {
        for (Label* each : view->findChildren<Label*>()) {
            if (each->isVisible() && each->text() == content) {
                return each;
            }
        }
        return nullptr;
    }

    std::vector<DisplayRow*> rows() const { return visible<RowList>()->rows(); }
    DisplayRow& row(std::size_t index) const { return *rows().at(index); }
    Switch& powerSwitch(std::size_t index) const { return *row(index).powerSwitch(); }
    RefreshButton& refreshButton() const { return *visible<RefreshButton>(); }
    WakeButton& wakeButton() const { return *visible<WakeButton>(); }
    QWidget* focused() const { return view->focusWidget(); }

    QImage picture() const { return view->grab().toImage(); }

    SimulatedPlatform system;
    ScriptedLifecycle lifecycle{system.windowServer, system.scheduler};
    std::shared_ptr<DisplayController> controller;
    std::unique_ptr<DisplayControlView> view;
};

}  // namespace tavrel
