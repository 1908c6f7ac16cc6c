#include "platform/x11/XServerProbe.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "platform/x11/snapshot/SnapshotReader.h"

namespace tavrel::x11 {

namespace {

bool hasExtension(Connection& connection, std::string_view name) {
    const auto cookie =
        xcb_query_extension(connection.get(), static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = connection.reply<xcb_query_extension_reply_t>(cookie.sequence);
    return reply != nullptr && reply->present != 0;
}

}  // namespace

std::optional<bool> isXwayland(const X11ServerOptions& options) {
    const auto connection = Connection::connect(options);
    if (connection == nullptr) {
        return std::nullopt;
    }
    if (hasExtension(*connection, "XWAYLAND")) {
        return true;
    }
    const auto snapshot = connection->hasRandr() ? readSnapshot(*connection, Probing::never)
                                                 : std::optional<Snapshot>();
    return snapshot.has_value() &&
           std::any_of(snapshot->outputs.begin(), snapshot->outputs.end(),
                       [](const Output& each) { return each.name.starts_with("XWAYLAND"); });
}

}  // namespace tavrel::x11
