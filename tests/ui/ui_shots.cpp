// Writes a picture of the window in each situation it is designed for, and in some that it
// has to cope with, to look at and to compare. Usage: tavrel_ui_shots FOLDER

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPixmap>
#include <algorithm>
#include <cstdio>

#include "tests/simulated/SimulatedPlatform.h"
#include "tests/ui/Situations.h"
#include "ui/DisplayControlView.h"
#include "ui/paint/Theme.h"

namespace {

bool writeShot(const tavrel::Situation& situation, const QDir& folder) {
    tavrel::SimulatedPlatform system;
    const auto controller = tavrel::DisplayController::create(system.platform());
    system.scheduler.settle();
    tavrel::show(*controller, situation);
    tavrel::DisplayControlView view(controller);
    view.show();
    // What is laid out late is done, but no time passes: spinners have not moved yet.
    QCoreApplication::sendPostedEvents();
    const QString file =
        folder.filePath(QString::fromStdString(situation.name) + QStringLiteral(".png"));
    if (!view.grab().toImage().save(file)) {
        std::fprintf(stderr, "Could not write %s\n", qPrintable(file));
        return false;
    }
    std::printf("%s\n", qPrintable(file));
    return true;
}

bool writeShots(const QDir& folder) {
    std::vector<tavrel::Situation> situations = tavrel::designedSituations();
    const std::vector<tavrel::Situation> extreme = tavrel::extremeSituations();
    situations.insert(situations.end(), extreme.begin(), extreme.end());
    return std::all_of(
        situations.begin(), situations.end(),
        [&](const tavrel::Situation& situation) { return writeShot(situation, folder); });
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
    tavrel::theme::apply();
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!QDir().mkpath(folder.path())) {
        std::fprintf(stderr, "Could not make %s\n", qPrintable(folder.path()));
        return 1;
    }
    return writeShots(folder) ? 0 : 1;
}
