#include "platform/x11/snapshot/KeptSnapshot.h"

#include <xcb/randr.h>

#include <utility>

namespace tavrel::x11 {

KeptSnapshot::KeptSnapshot(Connection& connection) : connection_(connection) {
    connection.selectRandrEvents(
        XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
        XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_PROPERTY);
}

std::shared_ptr<const Snapshot> KeptSnapshot::read(Probing probing) {
    if (probing != Probing::never || !isStillShown()) {
        readWhole(probing);
    }
    return snapshot_;
}

bool KeptSnapshot::isStillShown() {
    // Events come before the answers to what was asked after the change.
    return isSettled_ && !connection_.discardEvents() && areSame(connection_, *signs_, turn_++) &&
           !connection_.discardEvents();
}

void KeptSnapshot::readWhole(Probing probing) {
    // Those of before are no news to a reading that begins now.
    connection_.discardEvents();
    std::optional<Snapshot> snapshot = readSnapshot(connection_, probing);
    std::optional<LayoutSigns> signs =
        snapshot.has_value() ? readSigns(connection_, *snapshot) : std::nullopt;
    const bool isSame =
        signs.has_value() && signs == signs_ && snapshot_ != nullptr && snapshot == *snapshot_;
    isSettled_ = isSame && !connection_.discardEvents();
    snapshot_ =
        snapshot.has_value() ? std::make_shared<const Snapshot>(*std::move(snapshot)) : nullptr;
    signs_ = std::move(signs);
}

}  // namespace tavrel::x11
