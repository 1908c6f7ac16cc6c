#include <array>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

#include "platform/JsonNesting.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/layout/StrictReader.h"

namespace tavrel::layout {

namespace {

using Json = nlohmann::json;

constexpr std::array members{"display", "mode",    "area",          "rotation",   "scale",
                             "mirrors", "primary", "primaryOnLoan", "arrangement"};

Json toJson(const Area& area) {
    return {{"x", area.x}, {"y", area.y}, {"width", area.width}, {"height", area.height}};
}

/// A record of one object: the window server's notes are members beside ours.
Json toJson(const RememberedOutput& output) {
    Json record = Json::parse(output.notes, nullptr, false);
    if (!record.is_object()) {
        record = Json::object();
    }
    record["display"] = output.display;
    record["mode"] = {{"width", output.mode.width},
                      {"height", output.mode.height},
                      {"refresh", output.mode.refreshMillihertz},
                      {"timings", output.mode.timings}};
    record["area"] = toJson(output.area);
    record["rotation"] = output.rotation;
    record["mirrors"] = output.mirrors;
    record["primary"] = output.primary;
    record["primaryOnLoan"] = output.primaryOnLoan;
    // Both are left out where a window server knows no such thing.
    if (output.scale != 1) {
        record["scale"] = output.scale;
    }
    for (const Standing& each : output.arrangement) {
        record["arrangement"].push_back({{"display", each.display}, {"area", toJson(each.area)}});
    }
    return record;
}

/// The mode as version 0.1 wrote it, which knew X servers alone.
Mode readOldMode(StrictReader& reader, const Json& mode) {
    Mode converted;
    const auto take = [&](const char* name, auto number) {
        reader.number(mode, name, number);
        converted.timings.push_back(number);
    };
    take("dotClock", std::uint32_t{});
    take("horizontalSyncStart", int{});
    take("horizontalSyncEnd", int{});
    take("horizontalTotal", int{});
    take("horizontalSkew", int{});
    take("verticalSyncStart", int{});
    take("verticalSyncEnd", int{});
    take("verticalTotal", int{});
    take("flags", std::uint32_t{});
    converted.refreshMillihertz =
        refreshMillihertz(converted.timings[0], converted.timings[3] * converted.timings[7]);
    return converted;
}

Mode readMode(StrictReader& reader, const Json& mode) {
    Mode read;
    if (mode.is_object() && mode.contains("dotClock")) {
        read = readOldMode(reader, mode);
    } else {
        reader.number(mode, "refresh", read.refreshMillihertz);
        reader.numbers(mode, "timings", read.timings);
    }
    reader.number(mode, "width", read.width);
    reader.number(mode, "height", read.height);
    return read;
}

Area readArea(StrictReader& reader, const Json& area) {
    Area read;
    reader.number(area, "x", read.x);
    reader.number(area, "y", read.y);
    reader.number(area, "width", read.width);
    reader.number(area, "height", read.height);
    // Further than any desktop, and near enough for sums of these to stay in an int.
    constexpr int furthest = 1'000'000;
    for (const int each : {read.x, read.y, read.width, read.height}) {
        reader.check(-furthest <= each && each <= furthest);
    }
    return read;
}

double readScale(StrictReader& reader, const Json& record) {
    constexpr double largest = 100;
    double scale = 1;
    if (record.is_object() && record.contains("scale")) {
        reader.real(record, "scale", scale);
        reader.check(0 < scale && scale <= largest);
    }
    return scale;
}

std::vector<Standing> readArrangement(StrictReader& reader, const Json& record) {
    std::vector<Standing> arrangement;
    if (!record.is_object() || !record.contains("arrangement")) {
        return arrangement;
    }
    const Json& list = reader.member(record, "arrangement");
    reader.check(list.is_array());
    for (std::size_t i = 0; reader.isGood() && i < list.size(); ++i) {
        Standing& each = arrangement.emplace_back();
        reader.number(list[i], "display", each.display);
        each.area = readArea(reader, reader.member(list[i], "area"));
    }
    return arrangement;
}

std::string readNotes(Json record) {
    for (const char* member : members) {
        record.erase(member);
    }
    return record.dump();
}

RememberedOutput readOutput(StrictReader& reader, const Json& record) {
    RememberedOutput output;
    reader.number(record, "display", output.display);
    output.mode = readMode(reader, reader.member(record, "mode"));
    output.area = readArea(reader, reader.member(record, "area"));
    reader.number(record, "rotation", output.rotation);
    reader.check(isRotation(output.rotation));
    reader.numbers(record, "mirrors", output.mirrors);
    reader.truth(record, "primary", output.primary);
    reader.truth(record, "primaryOnLoan", output.primaryOnLoan);
    output.scale = readScale(reader, record);
    output.arrangement = readArrangement(reader, record);
    if (reader.isGood()) {
        output.notes = readNotes(record);
    }
    return output;
}

}  // namespace

std::string encodeMemory(const Memory& memory) {
    Json list = Json::array();
    for (const RememberedOutput& output : memory) {
        list.push_back(toJson(output));
    }
    return list.dump();
}

std::optional<Memory> decodeMemory(std::string_view bytes) {
    if (isNestedTooDeep(bytes)) {
        return std::nullopt;
    }
    const Json list = Json::parse(bytes, nullptr, false);
    if (!list.is_array()) {
        return std::nullopt;
    }
    StrictReader reader;
    Memory memory;
    for (const Json& record : list) {
        memory.push_back(readOutput(reader, record));
    }
    return reader.isGood() ? std::optional(std::move(memory)) : std::nullopt;
}

}  // namespace tavrel::layout
