#include "tests/scenario/Stage.h"

#include <ostream>

namespace tavrel::scenario {

namespace {

std::ostream& operator<<(std::ostream& out, const Row& row) {
    out << row.name << ": ";
    if (row.isBusy) {
        return out << "busy";
    }
    out << (row.isOn ? "on" : "off") << (row.isSwitchEnabled ? "" : ", locked");
    return row.lockText.empty() ? out : out << " (" << row.lockText << ")";
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Window& window) {
    for (const Row& row : window.rows) {
        out << "[" << row << "] ";
    }
    return out << '"' << window.footer << '"';
}

std::ostream& operator<<(std::ostream& out, const std::vector<ServerDisplay>& displays) {
    for (const ServerDisplay& display : displays) {
        out << "[" << (display.isOn ? "on " : "off") << display.place << "] ";
    }
    return out;
}

}  // namespace tavrel::scenario
