#include <gmock/gmock.h>
#include <QAccessible>
#include <QApplication>

/// Runs tests of widgets: on no real screen unless the environment names one, without the
/// desktop's style or colours, and with assistive technology taken to be listening.
int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    QAccessible::setActive(true);
    return RUN_ALL_TESTS();
}
