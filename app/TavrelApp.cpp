#include "app/TavrelApp.h"

#include <cstdlib>
#include <optional>
#include <utility>

#include <QApplication>
#include <QSocketNotifier>

#include "app/BringToFront.h"
#include "app/MainWindow.h"
#include "app/QuitRequests.h"
#include "app/ShownEmpty.h"
#include "app/StartupFailure.h"
#include "app/Tray.h"
#include "app/WindowKeeper.h"
#include "platform/posix/BrokenPipes.h"
#include "platform/posix/Heap.h"
#include "platform/posix/TerminationSignals.h"
#include "ui/paint/Theme.h"

namespace tavrel {

namespace {

constexpr const char* unwritableStoreText =
    "Your displays can’t be saved right now. Tavrel remembers them until it quits and keeps "
    "trying.";

/// On a Wayland desktop the window is one of Wayland's, also where the toolkit would rather go
/// through Xwayland; unless somebody has said otherwise.
void preferWayland() {
#ifndef Q_OS_MACOS
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "wayland;xcb");
    }
#endif
}

}  // namespace

int TavrelApp::main(int argc, char** argv) {
    shareOneHeap();
    ignoreBrokenPipes();
    preferWayland();
    const TerminationSignals terminationSignals;
    auto onlyCopy = becomeOnlyCopy();
    if (onlyCopy == nullptr) {
        return EXIT_SUCCESS;
    }
    // Beside all that comes before the first widget, which takes about as long.
    const std::future<void> fontConfiguration =
        std::async(std::launch::async, theme::readFontConfiguration);
    QApplication::setApplicationName(QStringLiteral("Tavrel"));
    QApplication::setApplicationVersion(QStringLiteral(TAVREL_VERSION));
    // By which a Linux desktop knows whose window it is, and which icon it has.
    QGuiApplication::setDesktopFileName(QStringLiteral(TAVREL_APPLICATION_ID));

    std::optional<StartupFailure> startupFailure(std::in_place);
    QApplication application(argc, argv);
    startupFailure.reset();

    // Beside what is done until there is a window to write in.
    std::future<void> fonts = std::async(std::launch::async, theme::findFonts);
    theme::apply();
    // The window server makes it visible beside all that comes next.
    auto window = std::make_unique<MainWindow>();
    placeAtPointer(*window);
    showEmpty(*window);
    const QSocketNotifier signalled(terminationSignals.descriptor(), QSocketNotifier::Read);
    QObject::connect(&signalled, &QSocketNotifier::activated, &application,
                     &QCoreApplication::quit);
    return TavrelApp(std::move(onlyCopy), std::move(window)).run(application, std::move(fonts));
}

TavrelApp::TavrelApp(std::unique_ptr<OnlyCopy> onlyCopy, std::unique_ptr<MainWindow> window)
    : _appDelegate(composition_.platform(), composition_.hotKeys()),
      quitSequence_(_appDelegate, composition_.switchOffGate(), composition_.quitHelp()),
      window_(std::move(window)),
      onlyCopy_(std::move(onlyCopy)) {}

TavrelApp::~TavrelApp() = default;

int TavrelApp::run(QApplication& application, std::future<void> fonts) {
    MainWindow& window = *window_;
    const QuitRequests quitRequests(application, [this] { end(); });
    // For a main loop that ends without having been asked.
    QObject::connect(&application, &QCoreApplication::aboutToQuit, [this] { end(); });
    _appDelegate.applicationDidFinishLaunching();
    _controller = DisplayController::create(composition_.platform());
    composition_.observeStore([weak = std::weak_ptr(_controller)] {
        if (const auto controller = weak.lock()) {
            controller->setErrorMessage(unwritableStoreText);
        }
    });

    fonts.wait();
    window.fill(_controller, composition_.hotKeys());
    const WindowKeeper windowKeeper(window);
    QApplication::setQuitOnLastWindowClosed(composition_.quitOnLastWindowClosed());
    if (!QApplication::quitOnLastWindowClosed()) {
        QObject::connect(&application, &QGuiApplication::applicationStateChanged, &window,
                         [&window](Qt::ApplicationState state) {
                             if (state == Qt::ApplicationActive) {
                                 window.show();
                             }
                         });
    }
    std::optional<Tray> tray;
    if (auto trayHost = makeTrayHost(composition_.platform().mainQueue)) {
        tray.emplace(window, _controller, std::move(trayHost));
    }
    onlyCopy_->serve(
        composition_.platform().mainQueue,
        {.activate = [&window](const std::string& token) { bringToFront(window, token); },
         .wake = [this] { _controller->wakeAll(); },
         .refresh = [this] { _controller->refresh(std::nullopt); }});
    // The displays have been found by now, as a rule: then nothing else is painted first.
    composition_.runDueTasks();
    return QApplication::exec();
}

void TavrelApp::end() {
    composition_.beginToEnd();
    quitSequence_.run();
}

}  // namespace tavrel
