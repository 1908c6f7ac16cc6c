#include <gmock/gmock.h>

#include <QApplication>
#include "ui/paint/Theme.h"

/// Runs tests of widgets, without a real screen unless the environment names one.
int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    testing::InitGoogleMock(&argc, argv);
    QApplication application(argc, argv);
    tavrel::theme::apply();
    return RUN_ALL_TESTS();
}
