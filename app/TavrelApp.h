#pragma once

#include <future>
#include <memory>

#include "app/AppDelegate.h"
#include "app/Composition.h"
#include "app/OnlyCopy.h"
#include "app/QuitSequence.h"
#include "controller/DisplayController.h"

class QApplication;

namespace tavrel {

class MainWindow;

/// The application: its delegate, its one controller, its one window.
class TavrelApp {
public:
    /// Runs the application to its end; returns the process's exit status.
    static int main(int argc, char** argv);

private:
    TavrelApp(std::unique_ptr<OnlyCopy> onlyCopy, std::unique_ptr<MainWindow> window);
    ~TavrelApp();
    /// The window is filled when `fonts` have been found.
    int run(QApplication& application, std::future<void> fonts);
    /// What is to be done before the process ends; only the first call does anything.
    void end();

    Composition composition_;
    /// The underscore in front, here and of `_controller`, is on purpose: it marks the two objects
    /// that the application wraps.
    AppDelegate _appDelegate;
    QuitSequence quitSequence_;
    std::shared_ptr<DisplayController> _controller;
    /// Shown before the other parts are made, which takes the window server as long.
    const std::unique_ptr<MainWindow> window_;
    /// Goes first, since others may call it until then.
    const std::unique_ptr<OnlyCopy> onlyCopy_;
};

}  // namespace tavrel
