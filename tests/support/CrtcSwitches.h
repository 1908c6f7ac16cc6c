#pragma once

#include <xcb/randr.h>

#include <map>
#include <optional>
#include <string>

#include "tests/support/XConnection.h"

namespace tavrel::support {

/// The changes of CRTCs from off to on and from on to off, whoever makes them, since this was
/// created.
class CrtcSwitches {
public:
    /// Throws std::runtime_error when the server does not answer, or has no RandR.
    explicit CrtcSwitches(const std::string& displayName);

    /// Returns once the server has told all that has happened so far.
    void roundTrip() const { connection_.roundTrip(); }
    /// Becomes readable when the server tells something.
    int descriptor() const { return xcb_get_file_descriptor(connection_.get()); }

    /// Takes the next one that has been told: whether a CRTC is on since. std::nullopt when there
    /// is none.
    std::optional<bool> next();

private:
    bool isChange(const xcb_generic_event_t& event) const;

    XConnection connection_;
    std::uint8_t firstEvent_ = 0;
    std::map<xcb_randr_crtc_t, bool> isOn_;
};

}  // namespace tavrel::support
