#include "tests/support/PlasmaDesktop.h"

#include <algorithm>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "tests/support/AppWindow.h"
#include "tests/support/DBus.h"
#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

constexpr const char* installedCompositor = "/usr/bin/kwin_wayland";

std::string supportInformation(const std::string& bus) {
    const DBus connection(bus);
    const Variant answer =
        connection.call("org.kde.KWin", "/KWin", "org.kde.KWin", "supportInformation");
    const char* text = nullptr;
    g_variant_get(answer.get(), "(&s)", &text);
    return text;
}

std::string valueOf(const std::string& line) {
    const std::size_t colon = line.find(": ");
    return colon == std::string::npos ? std::string() : line.substr(colon + 2);
}

std::vector<PlasmaDesktop::Screen> readScreens(const std::string& information) {
    std::vector<PlasmaDesktop::Screen> screens;
    std::istringstream lines(information);
    bool isInScreen = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("Screen ")) {
            screens.emplace_back();
            isInScreen = true;
        } else if (line.empty()) {
            isInScreen = false;
        } else if (isInScreen && line.starts_with("Name: ")) {
            screens.back().name = valueOf(line);
        } else if (isInScreen && line.starts_with("Enabled: ")) {
            screens.back().isOn = valueOf(line) == "1";
        } else if (isInScreen && line.starts_with("Geometry: ")) {
            screens.back().geometry = valueOf(line);
        } else if (isInScreen && line.starts_with("Scale: ")) {
            screens.back().scale = valueOf(line);
        }
    }
    return screens;
}

}  // namespace

bool PlasmaDesktop::isInstalled() {
    return std::filesystem::exists(installedCompositor);
}

PlasmaDesktop::PlasmaDesktop(int outputs, std::string xDisplayName)
    : outputs_(outputs),
      xDisplayName_(std::move(xDisplayName)),
      janitor_(folder_.path()),
      bus_(folder_.path(), "bus", janitor_) {
    // The packaged file has a capability that not everybody may use. A copy has none; it must be
    // called the same, by which its plug-ins recognise it.
    std::filesystem::create_directories(folder_.path() / "bin");
    std::filesystem::copy_file(installedCompositor, folder_.path() / "bin" / "kwin_wayland");
    start();
}

void PlasmaDesktop::start() {
    Environment environment = compositor_.environment();
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus_.address();
    // Painted by the processor, and not by a pretended graphics card: quick to start.
    environment["KWIN_COMPOSE"] = "Q";
    std::vector<std::string> command{(folder_.path() / "bin" / "kwin_wayland").string(),
                                     "--output-count",
                                     std::to_string(outputs_),
                                     "--width",
                                     "1024",
                                     "--height",
                                     "768",
                                     "--no-lockscreen",
                                     "--no-global-shortcuts",
                                     "--socket",
                                     "wayland"};
    if (xDisplayName_.empty()) {
        command.emplace_back("--virtual");
    } else {
        command.insert(command.end(), {"--x11-display", xDisplayName_});
    }
    compositor_.start(command, environment,
                      [&] { return std::filesystem::exists(displayName()) && !screens().empty(); });
}

std::vector<PlasmaDesktop::Screen> PlasmaDesktop::screens() const {
    return readScreens(supportInformation(bus_.address()));
}

PlasmaDesktop::Screen PlasmaDesktop::screen(const std::string& name) const {
    const std::vector<Screen> all = screens();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Screen& each) { return each.name == name; });
    return found == all.end() ? Screen{name, false, {}, {}} : *found;
}

void PlasmaDesktop::unplug(const std::string& name) const {
    std::vector<std::string> names;
    for (const Screen& each : screens()) {
        // What is said of the edges of screens begins alike.
        if (!each.name.empty()) {
            names.push_back(each.name);
        }
    }
    std::sort(names.begin(), names.end());
    const auto index = std::find(names.begin(), names.end(), name) - names.begin();
    // They were made one after the other, each above the one before.
    AppWindow::findAll(xDisplayName_, compositor_.pid())
        .at(static_cast<std::size_t>(index))
        .close();
    if (!waitUntil([&] {
            const std::vector<Screen> all = screens();
            return std::none_of(all.begin(), all.end(),
                                [&](const Screen& each) { return each.name == name; });
        })) {
        throw std::runtime_error("KWin keeps an output whose window is closed");
    }
}

std::ostream& operator<<(std::ostream& out, const PlasmaDesktop::Screen& screen) {
    return out << screen.name << (screen.isOn ? " on " : " off ") << screen.geometry << " scale "
               << screen.scale;
}

}  // namespace tavrel::support
