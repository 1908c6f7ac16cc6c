#include "platform/x11/crtc/RandrLayoutServer.h"

#include <xcb/randr.h>

#include <utility>

namespace tavrel::x11 {

RandrLayoutServer::RandrLayoutServer(Connection& connection, Probing probing,
                                     layout::KnownMonitors known)
    : connection_(connection), probing_(probing), known_(std::move(known)) {}

void RandrLayoutServer::lookForMonitors() {
    if (probing_ == Probing::always && !connection_.hasProbedLately()) {
        last_ = x11::lookForMonitors(connection_);
    } else if (probing_ != Probing::never) {
        // Only all of it shows whether the server contradicts itself since.
        read();
    }
}

std::optional<Snapshot> RandrLayoutServer::read() {
    connection_.discardEvents();
    std::optional<Snapshot> now = readSnapshot(connection_, isGrabbed_ ? Probing::never : probing_,
                                               last_ ? &*last_ : nullptr);
    if (now.has_value()) {
        now->known = known_;
    }
    last_ = now;
    return now;
}

bool RandrLayoutServer::grab() {
    // The server refuses it to nobody, and answers what is asked next once it has been granted.
    xcb_grab_server(connection_.get());
    isGrabbed_ = !connection_.isLost();
    return isGrabbed_;
}

void RandrLayoutServer::ungrab() {
    // Returns only when the server is free again, so that whoever asks it next is served.
    connection_.succeeded(xcb_ungrab_server_checked(connection_.get()));
    isGrabbed_ = false;
}

bool RandrLayoutServer::setScreenSize(const ScreenSize& size) {
    return connection_.succeeded(xcb_randr_set_screen_size_checked(
        connection_.get(), connection_.root(), static_cast<std::uint16_t>(size.width),
        static_cast<std::uint16_t>(size.height),
        static_cast<std::uint32_t>(size.widthInMillimetres),
        static_cast<std::uint32_t>(size.heightInMillimetres)));
}

bool RandrLayoutServer::setTransform(const CrtcTransform& wanted) {
    const Transform& transform = wanted.transform;
    const auto& m = transform.matrix;
    return connection_.succeeded(xcb_randr_set_crtc_transform_checked(
        connection_.get(), wanted.crtc, {m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8]},
        static_cast<std::uint16_t>(transform.filter.size()), transform.filter.data(),
        static_cast<std::uint32_t>(transform.parameters.size()), transform.parameters.data()));
}

bool RandrLayoutServer::setCrtc(const CrtcSetting& setting, std::uint32_t configTimestamp) {
    const auto reply = connection_.reply<xcb_randr_set_crtc_config_reply_t>(
        xcb_randr_set_crtc_config(
            connection_.get(), setting.crtc, XCB_CURRENT_TIME, configTimestamp,
            static_cast<std::int16_t>(setting.x), static_cast<std::int16_t>(setting.y),
            setting.mode, setting.rotation, static_cast<std::uint32_t>(setting.outputs.size()),
            setting.outputs.data())
            .sequence);
    return reply != nullptr && reply->status == XCB_RANDR_SET_CONFIG_SUCCESS;
}

bool RandrLayoutServer::setPrimary(Xid output) {
    return connection_.succeeded(
        xcb_randr_set_output_primary_checked(connection_.get(), connection_.root(), output));
}

bool RandrLayoutServer::isLost() const {
    return connection_.isLost();
}

}  // namespace tavrel::x11
