// Hands and eyes inside the application under test: what a person does to its window and
// what it tells assistive technology, asked for line by line on descriptor 3. The window
// may be on no screen at all.
#include <sys/socket.h>

#include <QAccessible>
#include <QApplication>
#include <QSocketNotifier>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "tests/platform/macos/simulated/Carbon.h"
#include "tests/platform/macos/simulated/CoreGraphics.h"

namespace tavrel::puppet {

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

Json carryOut(const Json& order) {
    const std::string what = order.at("do");
    if (what == "look") {
        return elements();
    }
    if (what == "click") {
        return click(order.at("x"), order.at("y"));
    }
    if (what == "press hot key") {
        return simulatedMac::pressHotKey(order.at("key"), order.at("modifiers")).has_value();
    }
    if (what == "close window") {
        QWidget* shown = window();
        return shown != nullptr && shown->close();
    }
    if (what == "click dock") {
        Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        return true;
    }
    throw std::invalid_argument(what);
}

class Puppet {
public:
    Puppet() : orders_(descriptor, QSocketNotifier::Read) {
        QObject::connect(&orders_, &QSocketNotifier::activated, [this] { obey(); });
        // The part of the main run loop that the toolkit has no knowledge of here.
        QObject::connect(&reports_, &QTimer::timeout,
                         [] { simulatedMac::deliverReportsOfOthers(); });
        reports_.start(5);
    }

private:
    void obey() {
        char bytes[1024];
        const ssize_t size = recv(descriptor, bytes, sizeof bytes, 0);
        if (size <= 0) {
            orders_.setEnabled(false);
            return;
        }
        read_.append(bytes, static_cast<std::size_t>(size));
        for (std::size_t end = 0; (end = read_.find('\n')) != std::string::npos;) {
            const Json order = Json::parse(read_.substr(0, end));
            read_.erase(0, end + 1);
            const std::string answer = carryOut(order).dump() + "\n";
            send(descriptor, answer.data(), answer.size(), MSG_NOSIGNAL);
        }
    }

    QSocketNotifier orders_;
    QTimer reports_;
    std::string read_;
};

/// Ends before the application object does.
std::unique_ptr<Puppet>& puppet() {
    static std::unique_ptr<Puppet> puppet;
    return puppet;
}

void start() {
    puppet() = std::make_unique<Puppet>();
    qAddPostRoutine([] { puppet().reset(); });
}

Q_COREAPP_STARTUP_FUNCTION(start)

}  // namespace
}  // namespace tavrel::puppet
