#include "app/StartupFailure.h"

#include <cstdio>
#include <cstdlib>

#include <QString>
#include <QtGlobal>

namespace tavrel {

namespace {

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
    std::fprintf(stderr, "tavrel: cannot open a window: no display server answers at \"%s\"\n",
                 display == nullptr ? "" : display);
    std::_Exit(EXIT_FAILURE);
}
#endif

}  // namespace

StartupFailure::StartupFailure() : previous_(qInstallMessageHandler(reportAndExit)) {}

StartupFailure::~StartupFailure() {
    qInstallMessageHandler(previous_);
}

}  // namespace tavrel
