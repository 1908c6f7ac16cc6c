#include "tests/simulation/Texts.h"

#include <regex>
#include <string>

namespace tavrel::simulation {

namespace {

// Written a second time, without the code under test.
const std::string name = "(MacBook Display|External Display( [1-9][0-9]*)?)";

const std::regex& statuses() {
    static const std::regex all(
        "Finding your displays…"
        "|Both displays are ready|Found (0|[3-9]|[1-9][0-9]+) displays|Found 1 display"
        "|Display control unavailable"
        "|One display must stay on"
        "|Waking " +
        name + "…|Turning off " + name +
        "…"
        "|Couldn’t change " +
        name + "|" + name +
        " is (on|off)"
        "|Waking both displays…|Both displays are on|Some displays couldn’t be woken"
        "|Lost display recovered automatically"
        "|Display setup changed — available screens restored"
        "|Display setup changed — restoring a safe layout…"
        "|Display recovery needs attention");
    return all;
}

const std::regex& errors() {
    static const std::regex all(
        "Couldn’t understand the connected-display list"
        "|Keep at least one display enabled so you can turn the other one back on\\."
        "|macOS couldn’t change the desktop display layout \\(error -?[0-9]+\\)"
        "|This macOS version doesn’t expose display enable/disable control"
        "|Couldn’t wake: " +
        name + "(, " + name +
        ")*"
        "|No usable display could be restored automatically\\. Reconnect a monitor, then press "
        "Control–Option–Command–W\\.");
    return all;
}

}  // namespace

bool isKnownStatus(const std::string& status) {
    return std::regex_match(status, statuses());
}

bool isKnownError(const std::optional<std::string>& error) {
    return !error.has_value() || std::regex_match(*error, errors());
}

}  // namespace tavrel::simulation
