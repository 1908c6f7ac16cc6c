#include "app/TavrelApp.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <utility>

#include <QApplication>
#include <QEvent>
#include <QSocketNotifier>

#include "app/MainWindow.h"
#include "app/ShowWindow.h"
#include "app/Texts.h"
#include "app/Tray.h"
#include "app/WindowKeeper.h"
#include "platform/posix/Process.h"
#include "ui/DisplayControlView.h"
#include "ui/paint/Theme.h"

namespace tavrel {

namespace {

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

#ifdef Q_OS_MACOS
/// A Mac always has a display server. What is missing is a part of the application, and the
/// toolkit says which.
void reportAndExit(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    std::fprintf(stderr, "tavrel: %s\n", qPrintable(message));
    if (type == QtFatalMsg) {
        std::_Exit(EXIT_FAILURE);
    }
}
#else
void reportAndExit(QtMsgType type, const QMessageLogContext& /*context*/,
                   const QString& /*message*/) {
    if (type != QtFatalMsg) {
        return;  // The toolkit says the same in several lines of its own.
    }
    const char* display = std::getenv("DISPLAY");
    std::fprintf(stderr, "tavrel: %s \"%s\"\n", appTexts::noDisplayServerAt,
                 display == nullptr ? "" : display);
    std::_Exit(EXIT_FAILURE);
}
#endif

/// While it exists, a toolkit that cannot start ends the process with status 1, not with an abort
/// and a core dump. One plain line says why: that no display server answers, or on a Mac what the
/// toolkit says. Needed only until the application object exists; one at a time.
class StartupFailure {
public:
    StartupFailure() : previous_(qInstallMessageHandler(reportAndExit)) {}
    ~StartupFailure() { qInstallMessageHandler(previous_); }

    StartupFailure(const StartupFailure&) = delete;
    StartupFailure& operator=(const StartupFailure&) = delete;

private:
    QtMessageHandler previous_;
};

/// Runs a task from within each request that the application quit, before the toolkit answers it.
///
/// A Mac that logs out asks every application whether it may end. The toolkit answers "cancel"
/// and quits afterwards, and the system then tells the user that the application has interrupted
/// the log-out and may end it at any moment. So what has to be done at the end is done inside the
/// question. On every system the toolkit turns each way of quitting into this request, but for an
/// end of its main loop that nobody asked for.
class QuitRequests : public QObject {
public:
    /// The application must outlive it. `requested` may be run several times, as one way of
    /// quitting may ask more than once.
    QuitRequests(QCoreApplication& application, std::function<void()> requested)
        : requested_(std::move(requested)) {
        application.installEventFilter(this);
    }

    bool eventFilter(QObject* receiver, QEvent* event) override {
        if (event->type() == QEvent::Quit && receiver == QCoreApplication::instance()) {
            requested_();
        }
        return QObject::eventFilter(receiver, event);
    }

private:
    std::function<void()> requested_;
};

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
    // Runs during all that comes before the first widget, which takes about as long.
    const std::future<void> fontConfiguration =
        std::async(std::launch::async, theme::readFontConfiguration);
    QApplication::setApplicationName(appTexts::product);
    QApplication::setApplicationVersion(QStringLiteral(TAVREL_VERSION));
    // By which a Linux desktop knows whose window it is, and which icon it has.
    QGuiApplication::setDesktopFileName(QStringLiteral(TAVREL_APPLICATION_ID));

    std::optional<StartupFailure> startupFailure(std::in_place);
    QApplication application(argc, argv);
    startupFailure.reset();

    // Runs until the window, which is shown without text first, is filled.
    std::future<void> fonts = std::async(std::launch::async, theme::findFonts);
    theme::apply();
    // Shown now, so that the window server makes it visible while the rest is set up.
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
            controller->setErrorMessage(appTexts::unwritableStore);
        }
    });

    // Computed beside what comes before the first painting.
    std::future<Backdrop> backdrop =
        std::async(std::launch::async, [ratio = window.devicePixelRatioF()] {
            return Backdrop(DisplayControlView::contentSize, ratio);
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
    if (auto trayHost = composition_.makeTrayHost()) {
        tray.emplace(window, _controller, std::move(trayHost));
    }
    onlyCopy_->serve(
        composition_.platform().mainQueue,
        {.activate = [&window](const std::string& token) { bringToFront(window, token); },
         .wake = [this] { _controller->wakeAll(); },
         .refresh = [this] { _controller->refresh(std::nullopt); }});
    // The displays have been found by now, as a rule: then nothing else is shown first.
    composition_.runDueTasks();
    window.reveal(backdrop.get());
    return QApplication::exec();
}

void TavrelApp::end() {
    composition_.beginToEnd();
    quitSequence_.run();
}

}  // namespace tavrel
