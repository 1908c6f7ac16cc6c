#include "platform/layout/RememberedOutput.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

namespace tavrel::x11 {

namespace {

using Json = nlohmann::json;

Json toJson(const ModeTimings& mode) {
    return {{"width", mode.width},
            {"height", mode.height},
            {"dotClock", mode.dotClock},
            {"horizontalSyncStart", mode.horizontalSyncStart},
            {"horizontalSyncEnd", mode.horizontalSyncEnd},
            {"horizontalTotal", mode.horizontalTotal},
            {"horizontalSkew", mode.horizontalSkew},
            {"verticalSyncStart", mode.verticalSyncStart},
            {"verticalSyncEnd", mode.verticalSyncEnd},
            {"verticalTotal", mode.verticalTotal},
            {"flags", mode.flags}};
}

Json toJson(const RememberedOutput& output) {
    return {{"display", output.display},
            {"mode", toJson(output.mode)},
            {"modeHint", output.modeHint},
            {"crtcHint", output.crtcHint},
            {"area",
             {{"x", output.area.x},
              {"y", output.area.y},
              {"width", output.area.width},
              {"height", output.area.height}}},
            {"rotation", output.rotation},
            {"transform",
             {{"matrix", output.transform.matrix},
              {"filter", output.transform.filter},
              {"parameters", output.transform.parameters}}},
            {"mirrors", output.mirrors},
            {"primary", output.primary},
            {"primaryOnLoan", output.primaryOnLoan},
            {"screen",
             {{"width", output.screen.width},
              {"height", output.screen.height},
              {"widthInMillimetres", output.screen.widthInMillimetres},
              {"heightInMillimetres", output.screen.heightInMillimetres}}}};
}

/// Reads members by name; remembers when one was missing or not what it must be.
class Reader {
public:
    template <typename Number>
    void number(const Json& object, const char* name, Number& value) {
        read(member(object, name), value);
    }

    template <typename Number>
    void numbers(const Json& list, std::vector<Number>& values) {
        check(list.is_array());
        for (std::size_t i = 0; good_ && i < list.size(); ++i) {
            read(list[i], values.emplace_back());
        }
    }

    void truth(const Json& object, const char* name, bool& value) {
        const Json& json = member(object, name);
        check(json.is_boolean());
        value = good_ && json.get<bool>();
    }

    void area(const Json& object, Area& area) {
        number(object, "x", area.x);
        number(object, "y", area.y);
        number(object, "width", area.width);
        number(object, "height", area.height);
    }

    void mode(const Json& object, ModeTimings& mode) {
        number(object, "width", mode.width);
        number(object, "height", mode.height);
        number(object, "dotClock", mode.dotClock);
        number(object, "horizontalSyncStart", mode.horizontalSyncStart);
        number(object, "horizontalSyncEnd", mode.horizontalSyncEnd);
        number(object, "horizontalTotal", mode.horizontalTotal);
        number(object, "horizontalSkew", mode.horizontalSkew);
        number(object, "verticalSyncStart", mode.verticalSyncStart);
        number(object, "verticalSyncEnd", mode.verticalSyncEnd);
        number(object, "verticalTotal", mode.verticalTotal);
        number(object, "flags", mode.flags);
    }

    void rotation(const Json& object, Rotation& rotation) {
        constexpr Rotation rotations = 0xF;
        constexpr Rotation reflections = 0x30;
        number(object, "rotation", rotation);
        check(std::has_single_bit(static_cast<Rotation>(rotation & rotations)) &&
              (rotation & ~(rotations | reflections)) == 0);
    }

    void transform(const Json& object, Transform& transform) {
        std::vector<std::int32_t> matrix;
        numbers(member(object, "matrix"), matrix);
        check(matrix.size() == transform.matrix.size());
        if (good_) {
            std::copy(matrix.begin(), matrix.end(), transform.matrix.begin());
        }
        const Json& filter = member(object, "filter");
        check(filter.is_string());
        if (good_) {
            transform.filter = filter.get<std::string>();
        }
        numbers(member(object, "parameters"), transform.parameters);
    }

    void screen(const Json& object, ScreenSize& screen) {
        number(object, "width", screen.width);
        number(object, "height", screen.height);
        number(object, "widthInMillimetres", screen.widthInMillimetres);
        number(object, "heightInMillimetres", screen.heightInMillimetres);
    }

    void output(const Json& object, RememberedOutput& output) {
        number(object, "display", output.display);
        mode(member(object, "mode"), output.mode);
        number(object, "modeHint", output.modeHint);
        number(object, "crtcHint", output.crtcHint);
        area(member(object, "area"), output.area);
        rotation(object, output.rotation);
        transform(member(object, "transform"), output.transform);
        numbers(member(object, "mirrors"), output.mirrors);
        truth(object, "primary", output.primary);
        truth(object, "primaryOnLoan", output.primaryOnLoan);
        screen(member(object, "screen"), output.screen);
    }

    bool good() const { return good_; }
    void check(bool condition) { good_ = good_ && condition; }

private:
    const Json& member(const Json& object, const char* name) {
        const auto found = object.is_object() ? object.find(name) : object.end();
        check(object.is_object() && found != object.end());
        return good_ ? *found : nothing_;
    }

    template <typename Number>
    void read(const Json& json, Number& value) {
        if (json.is_number_unsigned()) {
            keep(json.get<std::uint64_t>(), value);
        } else {
            check(json.is_number_integer());
            keep(good_ ? json.get<std::int64_t>() : 0, value);
        }
    }

    template <typename Wide, typename Number>
    void keep(Wide wide, Number& value) {
        check(std::in_range<Number>(wide));
        value = good_ ? static_cast<Number>(wide) : Number{};
    }

    bool good_ = true;
    Json nothing_;
};

}  // namespace

std::string encodeRemembered(const std::vector<RememberedOutput>& remembered) {
    Json list = Json::array();
    for (const RememberedOutput& output : remembered) {
        list.push_back(toJson(output));
    }
    // A filter's name is the server's; whatever it holds must not stop us.
    return list.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::vector<RememberedOutput>> decodeRemembered(std::string_view bytes) {
    const Json list = Json::parse(bytes, nullptr, false);
    if (!list.is_array()) {
        return std::nullopt;
    }
    Reader reader;
    std::vector<RememberedOutput> remembered;
    for (const Json& each : list) {
        reader.output(each, remembered.emplace_back());
    }
    return reader.good() ? std::optional(std::move(remembered)) : std::nullopt;
}

}  // namespace tavrel::x11
