#include "platform/layout/Arrangement.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <tuple>
#include <utility>

namespace tavrel::layout {

namespace {

struct Shift {
    int x = 0;
    int y = 0;

    int length() const { return std::abs(x) + std::abs(y); }
};

Area shifted(Area area, const Shift& by) {
    area.x += by.x;
    area.y += by.y;
    return area;
}

void shift(Arrangement& part, const Shift& by) {
    for (Standing& each : part) {
        each.area = shifted(each.area, by);
    }
}

bool hangTogether(const Area& a, const Area& b) {
    return overlap(a, b) || touch(a, b);
}

/// Takes out of `rest` all that hangs together with its first.
Arrangement takePart(Arrangement& rest) {
    Arrangement part{rest.front()};
    rest.erase(rest.begin());
    // Whoever is added may bring others along.
    for (std::size_t i = 0; i < part.size(); ++i) {
        const Area area = part[i].area;
        const auto others = std::stable_partition(
            rest.begin(), rest.end(),
            [&](const Standing& each) { return !hangTogether(each.area, area); });
        part.insert(part.end(), others, rest.end());
        rest.erase(others, rest.end());
    }
    return part;
}

/// How far a stretch must move to have something in common with another: not at all if it has.
int moveBeside(int start, int length, int otherStart, int otherLength) {
    if (start < otherStart + otherLength && otherStart < start + length) {
        return 0;
    }
    const int toBegin = otherStart - start;
    const int toEnd = otherStart + otherLength - (start + length);
    return std::abs(toBegin) <= std::abs(toEnd) ? toBegin : toEnd;
}

/// The shifts that bring `area` to each side of `fixed`.
std::array<Shift, 4> shiftsTo(const Area& fixed, const Area& area) {
    const int level = moveBeside(area.y, area.height, fixed.y, fixed.height);
    const int inLine = moveBeside(area.x, area.width, fixed.x, fixed.width);
    return {Shift{fixed.right() - area.x, level}, Shift{fixed.x - area.right(), level},
            Shift{inLine, fixed.bottom() - area.y}, Shift{inLine, fixed.y - area.bottom()}};
}

bool isFree(const Arrangement& fixed, const Arrangement& part, const Shift& by) {
    return std::none_of(part.begin(), part.end(), [&](const Standing& each) {
        return std::any_of(fixed.begin(), fixed.end(), [&](const Standing& other) {
            return overlap(shifted(each.area, by), other.area);
        });
    });
}

/// The shifts by which `part` comes to touch what is fixed, and covers none of it. There is always
/// one: to the right of all.
std::vector<Shift> freeShifts(const Arrangement& fixed, const Arrangement& part) {
    std::vector<Shift> shifts;
    for (const Standing& there : fixed) {
        for (const Standing& each : part) {
            for (const Shift& by : shiftsTo(there.area, each.area)) {
                if (isFree(fixed, part, by)) {
                    shifts.push_back(by);
                }
            }
        }
    }
    return shifts;
}

Shift shortestShift(const Arrangement& fixed, const Arrangement& part) {
    const std::vector<Shift> shifts = freeShifts(fixed, part);
    return *std::min_element(shifts.begin(), shifts.end(), [](const Shift& a, const Shift& b) {
        return a.length() < b.length();
    });
}

/// Adds the nearest of the parts to what is fixed.
void addNearest(Arrangement& fixed, std::vector<Arrangement>& parts) {
    const auto nearest = std::min_element(
        parts.begin(), parts.end(), [&](const Arrangement& a, const Arrangement& b) {
            return shortestShift(fixed, a).length() < shortestShift(fixed, b).length();
        });
    shift(*nearest, shortestShift(fixed, *nearest));
    fixed.insert(fixed.end(), nearest->begin(), nearest->end());
    parts.erase(nearest);
}

Arrangement atOrigin(Arrangement arrangement) {
    Shift by{std::numeric_limits<int>::max(), std::numeric_limits<int>::max()};
    for (const Standing& each : arrangement) {
        by = {std::min(by.x, each.area.x), std::min(by.y, each.area.y)};
    }
    shift(arrangement, {-by.x, -by.y});
    return arrangement;
}

}  // namespace

bool touch(const Area& a, const Area& b) {
    const bool isLevel = a.y < b.bottom() && b.y < a.bottom();
    const bool isInLine = a.x < b.right() && b.x < a.right();
    return (isLevel && (a.right() == b.x || b.right() == a.x)) ||
           (isInLine && (a.bottom() == b.y || b.bottom() == a.y));
}

Arrangement withoutGaps(Arrangement arrangement) {
    if (arrangement.empty()) {
        return arrangement;
    }
    // Whoever is nearest to the origin, where a desktop begins, stays; the order of the displays
    // in the list decides nothing.
    std::sort(arrangement.begin(), arrangement.end(), [](const Standing& a, const Standing& b) {
        return std::tuple(a.area.x, a.area.y, a.display) <
               std::tuple(b.area.x, b.area.y, b.display);
    });
    Arrangement fixed = takePart(arrangement);
    std::vector<Arrangement> parts;
    while (!arrangement.empty()) {
        parts.push_back(takePart(arrangement));
    }
    while (!parts.empty()) {
        addNearest(fixed, parts);
    }
    return atOrigin(std::move(fixed));
}

}  // namespace tavrel::layout
