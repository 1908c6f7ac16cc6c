#include "tests/simulation/Event.h"

#include <array>
#include <random>

namespace tavrel::simulation {

namespace {

using Kind = Event::Kind;

struct KindInfo {
    Kind kind;
    const char* name;
    /// How often it happens, relative to the others. What is rare in practice is common here.
    unsigned weight;
};

constexpr std::array kinds{
    KindInfo{Kind::userSwitch, "userSwitch", 24},
    KindInfo{Kind::userFlipsAll, "userFlipsAll", 3},
    KindInfo{Kind::userRefresh, "userRefresh", 8},
    KindInfo{Kind::userWakeAll, "userWakeAll", 4},
    KindInfo{Kind::hotKey, "hotKey", 4},
    KindInfo{Kind::plug, "plug", 8},
    KindInfo{Kind::unplug, "unplug", 8},
    KindInfo{Kind::lidClose, "lidClose", 4},
    KindInfo{Kind::lidOpen, "lidOpen", 5},
    KindInfo{Kind::lidCloseUnseen, "lidCloseUnseen", 3},
    KindInfo{Kind::lidOpenUnseen, "lidOpenUnseen", 4},
    KindInfo{Kind::outsideSwitch, "outsideSwitch", 10},
    KindInfo{Kind::outsideAllOff, "outsideAllOff", 6},
    KindInfo{Kind::idleReport, "idleReport", 6},
    KindInfo{Kind::startFaults, "startFaults", 5},
    KindInfo{Kind::slowServer, "slowServer", 2},
    KindInfo{Kind::serverFallsSilent, "serverFallsSilent", 2},
    KindInfo{Kind::serverSpeaks, "serverSpeaks", 4},
    KindInfo{Kind::stopFaults, "stopFaults", 4},
    KindInfo{Kind::hangApplication, "hangApplication", 2},
    KindInfo{Kind::stopHelper, "stopHelper", 4},
    KindInfo{Kind::helperGoesOn, "helperGoesOn", 3},
    KindInfo{Kind::secondLaunches, "secondLaunches", 2},
    KindInfo{Kind::secondQuits, "secondQuits", 8},
    KindInfo{Kind::wipeRegistry, "wipeRegistry", 1},
    KindInfo{Kind::corruptRegistry, "corruptRegistry", 2},
    KindInfo{Kind::lockStore, "lockStore", 1},
    KindInfo{Kind::unlockStore, "unlockStore", 2},
    KindInfo{Kind::stepClock, "stepClock", 3},
    KindInfo{Kind::quitAndRestart, "quitAndRestart", 3},
    KindInfo{Kind::converge, "converge", 6},
    KindInfo{Kind::refuseSwitches, "refuseSwitches", 0},
    KindInfo{Kind::loseReports, "loseReports", 0},
    KindInfo{Kind::loseLists, "loseLists", 0},
    KindInfo{Kind::wait, "wait", 0},
};

constexpr unsigned totalWeight() {
    unsigned total = 0;
    for (const KindInfo& info : kinds) {
        total += info.weight;
    }
    return total;
}

Kind drawKind(std::mt19937_64& random) {
    auto left = static_cast<unsigned>(random() % totalWeight());
    for (const KindInfo& info : kinds) {
        if (left < info.weight) {
            return info.kind;
        }
        left -= info.weight;
    }
    return Kind::converge;
}

/// Bursts, the pace of a person, and long quiet times.
std::chrono::milliseconds drawGap(std::mt19937_64& random) {
    const auto within = [&](std::uint64_t milliseconds) {
        return std::chrono::milliseconds(random() % milliseconds);
    };
    const auto dice = random() % 100;
    if (dice < 60) {
        return within(2'000);
    }
    if (dice < 90) {
        return within(120'000);
    }
    if (dice < 99) {
        return within(3'600'000);
    }
    return within(std::uint64_t{6} * 3'600'000);
}

}  // namespace

std::string describe(const Event& event) {
    for (const KindInfo& info : kinds) {
        if (info.kind == event.kind) {
            return "+" + std::to_string(event.gap.count()) + "ms " + info.name + "(" +
                   std::to_string(event.a) + ", " + std::to_string(event.b) + ")";
        }
    }
    return "unknown event";
}

std::vector<Event> generateEvents(std::uint64_t seed, double hours) {
    std::mt19937_64 random(seed);
    std::vector<Event> events;
    std::chrono::duration<double, std::ratio<3600>> total{0};
    while (total.count() < hours) {
        const Kind kind = drawKind(random);
        const auto gap = drawGap(random);
        const auto a = static_cast<std::uint32_t>(random());
        const auto b = static_cast<std::uint32_t>(random());
        events.push_back({kind, gap, a, b});
        total += gap;
    }
    return events;
}

}  // namespace tavrel::simulation
