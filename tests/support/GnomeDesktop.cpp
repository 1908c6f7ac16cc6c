#include "tests/support/GnomeDesktop.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "tests/support/DBus.h"

namespace tavrel::support {

namespace {

constexpr const char* installed = "/usr/bin/mutter";
constexpr const char* displayConfig = "org.gnome.Mutter.DisplayConfig";
constexpr const char* configObject = "/org/gnome/Mutter/DisplayConfig";

Variant currentState(const std::string& bus) {
    return DBus(bus).call(displayConfig, configObject, displayConfig, "GetCurrentState");
}

Variant child(GVariant* parent, std::size_t index) {
    return Variant(g_variant_get_child_value(parent, index));
}

std::string textIn(GVariant* tuple, std::size_t index) {
    return g_variant_get_string(child(tuple, index).get(), nullptr);
}

GnomeDesktop::Screen readMonitor(GVariant* monitor) {
    GnomeDesktop::Screen screen{.connector = textIn(child(monitor, 0).get(), 0)};
    const Variant modes = child(monitor, 1);
    for (std::size_t i = 0; i < g_variant_n_children(modes.get()); ++i) {
        const Variant mode = child(modes.get(), i);
        gboolean isCurrent = FALSE;
        g_variant_lookup(child(mode.get(), 6).get(), "is-current", "b", &isCurrent);
        if (isCurrent != FALSE) {
            screen.mode = textIn(mode.get(), 0);
        }
    }
    return screen;
}

void place(std::vector<GnomeDesktop::Screen>& screens, GVariant* logical) {
    const Variant monitors = child(logical, 5);
    for (std::size_t i = 0; i < g_variant_n_children(monitors.get()); ++i) {
        const std::string connector = textIn(child(monitors.get(), i).get(), 0);
        for (GnomeDesktop::Screen& screen : screens) {
            if (screen.connector == connector) {
                screen.isOn = true;
                screen.x = g_variant_get_int32(child(logical, 0).get());
                screen.y = g_variant_get_int32(child(logical, 1).get());
                screen.scale = g_variant_get_double(child(logical, 2).get());
                screen.isPrimary = g_variant_get_boolean(child(logical, 4).get()) != FALSE;
            }
        }
    }
}

}  // namespace

bool GnomeDesktop::isInstalled() {
    return std::filesystem::exists(installed);
}

GnomeDesktop::GnomeDesktop(bool hasLid, std::vector<std::string> monitors)
    : monitors_(std::move(monitors)),
      janitor_(folder_.path()),
      bus_(folder_.path(), "bus", janitor_),
      systemBus_(folder_.path(), "system", janitor_) {
    if (hasLid) {
        lid_ = std::make_unique<LidService>(systemBus_.address(), LidService::Kind::upower, false);
    }
    start();
}

void GnomeDesktop::start() {
    Environment environment = compositor_.environment();
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus_.address();
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = systemBus_.address();
    environment["GSETTINGS_BACKEND"] = "memory";
    std::vector<std::string> command{installed, "--wayland", "--headless", "--no-x11",
                                     "--wayland-display=wayland"};
    for (const std::string& monitor : monitors_) {
        command.insert(command.end(), {"--virtual-monitor", monitor});
    }
    compositor_.start(command, environment, [&] { return screens().size() == monitors_.size(); });
}

std::vector<GnomeDesktop::Screen> GnomeDesktop::screens() const {
    const Variant state = currentState(bus_.address());
    const Variant monitors = child(state.get(), 1);
    std::vector<Screen> screens;
    for (std::size_t i = 0; i < g_variant_n_children(monitors.get()); ++i) {
        screens.push_back(readMonitor(child(monitors.get(), i).get()));
    }
    const Variant logical = child(state.get(), 2);
    for (std::size_t i = 0; i < g_variant_n_children(logical.get()); ++i) {
        place(screens, child(logical.get(), i).get());
    }
    return screens;
}

GnomeDesktop::Screen GnomeDesktop::screen(const std::string& connector) const {
    const std::vector<Screen> all = screens();
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const Screen& each) { return each.connector == connector; });
    return found == all.end() ? Screen{.connector = connector} : *found;
}

std::string GnomeDesktop::preferredMode(const std::string& connector) {
    return connector == "Meta-0"   ? "1920x1080@60.000"
           : connector == "Meta-1" ? "1600x900@60.000"
                                   : "1280x1024@60.000";
}

void GnomeDesktop::apply(const std::vector<Screen>& screens) const {
    const Variant state = currentState(bus_.address());
    GVariantBuilder logical;
    g_variant_builder_init(&logical, G_VARIANT_TYPE("a(iiduba(ssa{sv}))"));
    for (const Screen& screen : screens) {
        if (screen.isOn) {
            GVariantBuilder monitors;
            g_variant_builder_init(&monitors, G_VARIANT_TYPE("a(ssa{sv})"));
            g_variant_builder_add(&monitors, "(ssa{sv})", screen.connector.c_str(),
                                  screen.mode.c_str(), nullptr);
            g_variant_builder_add(&logical, "(iiduba(ssa{sv}))", screen.x, screen.y, screen.scale,
                                  0U, screen.isPrimary ? TRUE : FALSE, &monitors);
        }
    }
    const std::uint32_t serial = g_variant_get_uint32(child(state.get(), 0).get());
    constexpr std::uint32_t temporary = 1;
    DBus(bus_.address())
        .call(displayConfig, configObject, displayConfig, "ApplyMonitorsConfig",
              g_variant_new("(uua(iiduba(ssa{sv}))a{sv})", serial, temporary, &logical, nullptr));
}

void GnomeDesktop::setLidClosed(bool isClosed) {
    lid_->setClosed(isClosed);
}

std::ostream& operator<<(std::ostream& out, const GnomeDesktop::Screen& screen) {
    out << screen.connector;
    if (!screen.isOn) {
        return out << " off";
    }
    return out << ' ' << screen.mode << '+' << screen.x << '+' << screen.y << " at " << screen.scale
               << (screen.isPrimary ? ", primary" : "");
}

}  // namespace tavrel::support
