// Writes a picture of the window in each situation it is designed for, to look at and to
// compare. Usage: tavrel_ui_shots FOLDER

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPixmap>
#include <cstdio>

#include "platform/simulated/SimulatedPlatform.h"
#include "tests/ui/Situations.h"
#include "ui/DisplayControlView.h"
#include "ui/Theme.h"

namespace {

bool writeShots(const QDir& folder) {
    tavrel::SimulatedPlatform system;
    for (const tavrel::Situation& situation : tavrel::designedSituations()) {
        const auto controller = tavrel::DisplayController::create(system.platform());
        system.scheduler.settle();
        tavrel::show(*controller, situation);
        // Pictures are taken of a view as it first appears, with nothing moved yet.
        tavrel::DisplayControlView view(controller);
        view.show();
        const QString file =
            folder.filePath(QString::fromStdString(situation.name) + QStringLiteral(".png"));
        if (!view.grab().toImage().save(file)) {
            std::fprintf(stderr, "Could not write %s\n", qPrintable(file));
            return false;
        }
        std::printf("%s\n", qPrintable(file));
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "Usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    if (!qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) {
        qputenv("QT_SCALE_FACTOR", "2");
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    tavrel::theme::applyTo(application);
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!QDir().mkpath(folder.path())) {
        std::fprintf(stderr, "Could not make %s\n", qPrintable(folder.path()));
        return 1;
    }
    return writeShots(folder) ? 0 : 1;
}
