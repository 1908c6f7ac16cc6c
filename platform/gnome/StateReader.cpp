#include "platform/gnome/BusDisplayConfig.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrel::gnome {

namespace {

/// Reads a message from its beginning to its end. From the first thing on that isn't as
/// expected, everything else is left as it was.
class Reader {
public:
    explicit Reader(sd_bus_message* message) : message_(message) {}

    template <typename... Values>
    void read(const char* types, Values... values) {
        if (isGood_) {
            isGood_ = sd_bus_message_read(message_, types, values...) > 0;
        }
    }

    void text(std::string& value) {
        const char* read = nullptr;
        this->read("s", &read);
        value = isGood_ ? read : "";
    }

    void truth(bool& value) {
        int read = 0;
        this->read("b", &read);
        value = read != 0;
    }

    void each(char container, const char* contents, const std::function<void()>& readOne) {
        enter(SD_BUS_TYPE_ARRAY, contents);
        // Without the brackets.
        const std::string inner(contents + 1, std::strlen(contents) - 2);
        while (isGood_ && sd_bus_message_at_end(message_, 0) == 0) {
            within(container, inner.c_str(), readOne);
        }
        leave();
    }

    void within(char container, const char* contents, const std::function<void()>& readOne) {
        enter(container, contents);
        if (isGood_) {
            readOne();
        }
        leave();
    }

    /// `take` reads the value if it is one it wants, and says whether it has.
    void eachProperty(const std::function<bool(std::string_view name)>& take) {
        each(SD_BUS_TYPE_DICT_ENTRY, "{sv}", [&] {
            std::string name;
            text(name);
            if (isGood_ && !take(name)) {
                isGood_ = sd_bus_message_skip(message_, "v") >= 0;
            }
        });
    }

    /// Reads the value if it is of this type.
    bool property(const char* type, bool& value) {
        int read = 0;
        return variant(type, read, [&] { value = read != 0; });
    }
    bool property(const char* type, std::uint32_t& value) {
        return variant(type, value, [] {});
    }
    bool property(const char* type, std::string& value) {
        const char* read = nullptr;
        return variant(type, read, [&] { value = read; });
    }

    std::vector<double> reals() {
        const void* first = nullptr;
        std::size_t bytes = 0;
        if (isGood_) {
            isGood_ = sd_bus_message_read_array(message_, SD_BUS_TYPE_DOUBLE, &first, &bytes) >= 0;
        }
        std::vector<double> values(isGood_ ? bytes / sizeof(double) : 0);
        if (first != nullptr && !values.empty()) {
            std::memcpy(values.data(), first, values.size() * sizeof(double));
        }
        return values;
    }

    void check(bool condition) { isGood_ = isGood_ && condition; }
    bool isGood() const { return isGood_; }

private:
    /// Leaves a value of another type alone, and returns false.
    template <typename Value>
    bool variant(const char* type, Value& value, const std::function<void()>& take) {
        const char* contents = nullptr;
        char kind = 0;
        if (!isGood_ || sd_bus_message_peek_type(message_, &kind, &contents) <= 0 ||
            kind != SD_BUS_TYPE_VARIANT || std::string_view(contents) != type) {
            return false;
        }
        read("v", type, &value);
        if (isGood_) {
            take();
        }
        return true;
    }

    void enter(char container, const char* contents) {
        if (isGood_) {
            isGood_ = sd_bus_message_enter_container(message_, container, contents) > 0;
        }
    }
    void leave() {
        if (isGood_) {
            isGood_ = sd_bus_message_exit_container(message_) >= 0;
        }
    }

    sd_bus_message* message_;
    bool isGood_ = true;
};

/// Further than any desktop, and near enough for sums of these to stay in an int.
constexpr int furthest = 1'000'000;
constexpr double fastest = 100'000;

bool isScale(double scale) {
    return scale > 0.1 && scale < 100;
}

/// Of modes of one size and refresh rate, what tells them apart.
constexpr std::int64_t interlaced = 1;
constexpr std::int64_t variableRefresh = 2;

void readNames(Reader& reader, Monitor& monitor) {
    reader.text(monitor.connector);
    reader.text(monitor.vendor);
    reader.text(monitor.product);
    reader.text(monitor.serial);
}

struct ListedMode {
    MonitorMode mode;
    bool isCurrent = false;
    bool isPreferred = false;
};

ListedMode readMode(Reader& reader) {
    ListedMode listed;
    layout::Mode& mode = listed.mode.mode;
    double refresh = 0;
    double preferredScale = 0;
    bool isInterlaced = false;
    std::string refreshKind;
    reader.text(listed.mode.id);
    reader.read("iidd", &mode.width, &mode.height, &refresh, &preferredScale);
    reader.check(mode.width > 0 && mode.width <= furthest && mode.height > 0 &&
                 mode.height <= furthest && refresh >= 0 && refresh <= fastest);
    mode.scales = reader.reals();
    reader.check(std::all_of(mode.scales.begin(), mode.scales.end(), isScale));
    reader.eachProperty([&](std::string_view name) {
        return (name == "is-current" && reader.property("b", listed.isCurrent)) ||
               (name == "is-preferred" && reader.property("b", listed.isPreferred)) ||
               (name == "is-interlaced" && reader.property("b", isInterlaced)) ||
               (name == "refresh-rate-mode" && reader.property("s", refreshKind));
    });
    if (reader.isGood()) {
        const auto preferred =
            std::find_if(mode.scales.begin(), mode.scales.end(),
                         [&](double each) { return layout::isSameScale(each, preferredScale); });
        if (preferred != mode.scales.end()) {
            std::rotate(mode.scales.begin(), preferred, preferred + 1);
        }
        mode.refreshMillihertz = static_cast<int>(std::lround(refresh * 1000));
        if (isInterlaced) {
            mode.timings.push_back(interlaced);
        }
        if (refreshKind == "variable") {
            mode.timings.push_back(variableRefresh);
        }
    }
    return listed;
}

void addModes(Monitor& monitor, std::vector<ListedMode> modes) {
    std::stable_partition(modes.begin(), modes.end(),
                          [](const ListedMode& each) { return each.isPreferred; });
    for (ListedMode& each : modes) {
        if (each.isCurrent) {
            monitor.currentMode = monitor.modes.size();
        }
        monitor.modes.push_back(std::move(each.mode));
    }
}

Monitor readMonitor(Reader& reader) {
    Monitor monitor;
    reader.within(SD_BUS_TYPE_STRUCT, "ssss", [&] { readNames(reader, monitor); });
    std::vector<ListedMode> modes;
    reader.each(SD_BUS_TYPE_STRUCT, "(siiddada{sv})", [&] { modes.push_back(readMode(reader)); });
    addModes(monitor, std::move(modes));
    MonitorSettings& settings = monitor.settings;
    std::uint32_t number = 0;
    reader.eachProperty([&](std::string_view name) {
        if (name == "color-mode" && reader.property("u", number)) {
            settings.colorMode = number;
            return true;
        }
        if (name == "rgb-range" && reader.property("u", number)) {
            settings.rgbRange = number;
            return true;
        }
        return (name == "is-builtin" && reader.property("b", monitor.isBuiltIn)) ||
               (name == "is-underscanning" && reader.property("b", settings.isUnderscanning));
    });
    return monitor;
}

LogicalMonitor readLogicalMonitor(Reader& reader) {
    LogicalMonitor logical;
    reader.read("iidu", &logical.x, &logical.y, &logical.scale, &logical.transform);
    reader.truth(logical.isPrimary);
    reader.check(std::abs(logical.x) <= furthest && std::abs(logical.y) <= furthest &&
                 isScale(logical.scale) && layout::rotationOf(logical.transform).has_value());
    reader.each(SD_BUS_TYPE_STRUCT, "(ssss)", [&] {
        Monitor shown;
        readNames(reader, shown);
        logical.monitors.push_back(std::move(shown.connector));
    });
    reader.eachProperty([](std::string_view /*name*/) { return false; });
    return logical;
}

bool listsAllItShows(const MonitorState& state) {
    return std::all_of(state.logicalMonitors.begin(), state.logicalMonitors.end(),
                       [&](const LogicalMonitor& logical) {
                           return std::all_of(logical.monitors.begin(), logical.monitors.end(),
                                              [&](const std::string& connector) {
                                                  return state.monitor(connector) != nullptr;
                                              });
                       });
}

}  // namespace

std::optional<MonitorState> readState(sd_bus_message* answer) {
    Reader reader(answer);
    MonitorState state;
    reader.read("u", &state.serial);
    reader.each(SD_BUS_TYPE_STRUCT, "((ssss)a(siiddada{sv})a{sv})",
                [&] { state.monitors.push_back(readMonitor(reader)); });
    reader.each(SD_BUS_TYPE_STRUCT, "(iiduba(ssss)a{sv})",
                [&] { state.logicalMonitors.push_back(readLogicalMonitor(reader)); });
    reader.eachProperty([&](std::string_view name) {
        return (name == "layout-mode" && reader.property("u", state.layoutMode)) ||
               (name == "supports-changing-layout-mode" &&
                reader.property("b", state.canChangeLayoutMode));
    });
    const bool isGood = reader.isGood() && listsAllItShows(state);
    return isGood ? std::optional(std::move(state)) : std::nullopt;
}

}  // namespace tavrel::gnome
