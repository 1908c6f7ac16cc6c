// Linked into the application under test: does to its window what a person would, and tells
// what the window tells assistive technology. Each line that comes on descriptor 3 is a
// command in JSON and is answered with one. The window need not be on a screen.
#include <sys/socket.h>

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "tests/platform/macos/simulated/Carbon.h"
#include "tests/platform/macos/simulated/CoreGraphics.h"
#include "tests/platform/macos/simulated/Desk.h"

namespace tavrel::remoteControl {

namespace {

using Json = nlohmann::json;

constexpr int descriptor = 3;

const char* nameOf(QAccessible::Role role) {
    switch (role) {
        case QAccessible::StaticText:
            return "label";
        case QAccessible::CheckBox:
            return "check box";
        case QAccessible::Button:
            return "push button";
        case QAccessible::Grouping:
            return "grouping";
        case QAccessible::Pane:
            return "panel";
        default:
            return "other";
    }
}

void describe(QAccessibleInterface& element, std::size_t parent, Json& into) {
    const std::size_t self = into.size();
    const QAccessible::State state = element.state();
    const QRect bounds = element.rect();
    into.push_back({{"name", element.text(QAccessible::Name).toStdString()},
                    {"role", nameOf(element.role())},
                    {"bounds", {bounds.x(), bounds.y(), bounds.width(), bounds.height()}},
                    {"parent", parent},
                    {"busy", state.busy != 0},
                    {"checked", state.checked != 0},
                    {"enabled", state.disabled == 0},
                    {"showing", state.invisible == 0}});
    for (int i = 0; i < element.childCount(); ++i) {
        if (QAccessibleInterface* child = element.child(i)) {
            describe(*child, self, into);
        }
    }
}

QWidget* window() {
    for (QWidget* each : QApplication::topLevelWidgets()) {
        if (each->isWindow() && each->isVisible() && each->windowType() == Qt::Window) {
            return each;
        }
    }
    return nullptr;
}

Json elements() {
    Json all = Json::array();
    if (QWidget* shown = window()) {
        describe(*QAccessible::queryAccessibleInterface(shown), 0, all);
    }
    return all;
}

/// As a Mac that logs out does: asks whether the application may end, and returns which displays
/// are on at the moment of the answer. The toolkit puts this event within the question, answers
/// "cancel" to it whatever becomes of the event, and quits afterwards if that was accepted.
Json askToTerminate() {
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(qApp, &quit);
    Json on = Json::array();
    for (const simulatedMac::Display& each :
         simulatedMac::displays(simulatedMac::SharedState::ofThisProcess())) {
        if (each.connected && each.enabled) {
            on.push_back(each.id);
        }
    }
    return on;
}

/// Presses and releases the button at a point of the screen.
bool click(int x, int y) {
    QWidget* shown = window();
    if (shown == nullptr) {
        return false;
    }
    const QPoint place = shown->mapFromGlobal(QPoint(x, y));
    QTest::mouseClick(shown->windowHandle(), Qt::LeftButton, {}, place);
    return true;
}

/// As a Mac does with a chord: it goes to those who have registered it, and to the window in front
/// only where nobody has, or nobody says to have handled it. Returns whether it is registered here.
bool pressWakeChord() {
    constexpr std::uint32_t keyW = 13;
    constexpr std::uint32_t controlOptionCommand = 0x1900;
    const auto answers = simulatedMac::pressHotKey(keyW, controlOptionCommand);
    const bool isTaken =
        answers && (answers->empty() || std::count(answers->begin(), answers->end(), 0) > 0);
    if (QWidget* shown = window(); shown != nullptr && !isTaken) {
        QTest::keyClick(shown->windowHandle(), Qt::Key_W,
                        Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    }
    return answers.has_value();
}

Json execute(const Json& command) {
    const std::string what = command.at("do");
    if (what == "look") {
        return elements();
    }
    if (what == "click") {
        return click(command.at("x"), command.at("y"));
    }
    if (what == "press hot key") {
        return pressWakeChord();
    }
    if (what == "close window") {
        QWidget* shown = window();
        return shown != nullptr && shown->close();
    }
    if (what == "click dock") {
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        return true;
    }
    if (what == "log out") {
        return askToTerminate();
    }
    throw std::invalid_argument(what);
}

class RemoteControl {
public:
    RemoteControl() : commands_(descriptor, QSocketNotifier::Read) {
        QObject::connect(&commands_, &QSocketNotifier::activated, [this] { read(); });
        // A Mac's main run loop would do this by itself.
        QObject::connect(&reports_, &QTimer::timeout,
                         [] { simulatedMac::deliverReportsOfOthers(); });
        reports_.start(5);
    }

private:
    void read() {
        char bytes[1024];
        const ssize_t size = recv(descriptor, bytes, sizeof bytes, 0);
        if (size <= 0) {
            commands_.setEnabled(false);
            return;
        }
        received_.append(bytes, static_cast<std::size_t>(size));
        for (std::size_t end = 0; (end = received_.find('\n')) != std::string::npos;) {
            const Json command = Json::parse(received_.substr(0, end));
            received_.erase(0, end + 1);
            // Nobody acts on what happened less than a turn of the run loop ago.
            simulatedMac::deliverReportsOfOthers();
            const std::string answer = execute(command).dump() + "\n";
            send(descriptor, answer.data(), answer.size(), MSG_NOSIGNAL);
        }
    }

    QSocketNotifier commands_;
    QTimer reports_;
    std::string received_;
};

void start() {
    static std::unique_ptr<RemoteControl> remoteControl;
    remoteControl = std::make_unique<RemoteControl>();
    // Its timer must not outlive the application object.
    qAddPostRoutine([] { remoteControl.reset(); });
}

Q_COREAPP_STARTUP_FUNCTION(start)

}  // namespace
}  // namespace tavrel::remoteControl
