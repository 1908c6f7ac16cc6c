#pragma once

#include <pthread.h>
#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/DisplayID.h"

/// A Mac's system services in memory, as far as the application uses them.
///
/// What belongs to the whole machine, and not to one process, is plain data, so that several
/// processes can share it.
namespace tavrel::simulatedMac {

struct Display {
    /// What happens to a display that is switched off. It is never in the public list.
    enum class WhenOff : std::uint8_t {
        /// The private list still has it, and questions about it are answered.
        staysInPrivateList,
        /// It is in no list, and the answer to every question is −1. It can still be
        /// switched on.
        vanishes,
    };

    DisplayID id = 0;
    bool builtIn = false;
    bool connected = true;
    bool enabled = true;
    WhenOff whenOff = WhenOff::staysInPrivateList;
    std::uint32_t vendor = 1;
    std::uint32_t model = 2;
    std::uint32_t serial = 3;
};

/// The statuses that the services return instead of doing their work; with 0 they do it.
struct Refusals {
    std::int32_t begin = 0;
    std::int32_t configure = 0;
    std::int32_t cancel = 0;
    std::int32_t complete = 0;
    /// How many displays are online.
    std::int32_t onlineCount = 0;
    /// Which displays are online.
    std::int32_t onlineList = 0;
    std::int32_t privateList = 0;
    std::int32_t registerCallback = 0;
    std::int32_t installEventHandler = 0;
    std::int32_t registerHotKey = 0;
    /// While it is refused, preferences are kept but not written to the disk.
    std::int32_t synchronize = 0;
};

/// The kind of call that a refusal is about.
using Refusal = std::int32_t Refusals::*;

struct Report {
    DisplayID display = 0;
    std::uint32_t flags = 0;
    /// The process that made the change, and was told of it then; 0 for a program that is
    /// not simulated.
    pid_t madeBy = 0;
};

struct Preference {
    enum class Kind : std::uint8_t { none, data, string, number };

    Kind kind = Kind::none;
    std::array<char, 64> key{};
    std::uint32_t size = 0;
    std::array<char, 16'384> bytes{};
};

struct State {
    std::array<Display, 16> displays{};
    std::size_t displayCount = 0;
    /// Whether a display that is switched is also reported as added or removed.
    bool switchesComeAndGo = false;
    Refusals refusals{};
    /// How many more entries a list claims to have written than it has; fewer if negative.
    std::int32_t claimedTooMany = 0;
    /// How many of the next changes hang before they are made, and how many do. With the second
    /// set to 0, all go on.
    int changesToHang = 0;
    int hangingChanges = 0;
    /// How many times it has been asked for to switch a display on.
    int switchOnRequests = 0;
    /// Whether another program holds every chord exclusively. Registrations are accepted.
    bool chordsAreHeldElsewhere = false;
    /// Whether the private entry points are there.
    bool hasEntryPoints = true;
    /// All reports ever made are numbered. The newest are here, each at its number modulo
    /// the size.
    std::array<Report, 1024> reports{};
    std::uint64_t reportCount = 0;
    std::array<Preference, 4> preferences{};
};

}  // namespace tavrel::simulatedMac
