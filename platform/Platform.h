#pragma once

#include "platform/Words.h"

namespace tavrel {

class BackgroundQueue;
class DisplayQueries;
class DisplaySwitch;
class MainQueue;
class NotificationCenter;
class ReconfigurationReports;
class UserDefaults;
class WallClock;

/// Everything the core needs from the system it runs on. Owns nothing: the parts belong to
/// the code that composes the application and must outlive the last background job.
struct Platform {
    DisplaySwitch& displaySwitch;
    DisplayQueries& queries;
    ReconfigurationReports& reports;
    UserDefaults& userDefaults;
    WallClock& wallClock;
    MainQueue& mainQueue;
    BackgroundQueue& backgroundQueue;
    NotificationCenter& notificationCenter;
    Words words = {};

    /// The same platform with another switch, for example one that wraps this one's.
    Platform with(DisplaySwitch& other) const {
        return {.displaySwitch = other,
                .queries = queries,
                .reports = reports,
                .userDefaults = userDefaults,
                .wallClock = wallClock,
                .mainQueue = mainQueue,
                .backgroundQueue = backgroundQueue,
                .notificationCenter = notificationCenter,
                .words = words};
    }
};

}  // namespace tavrel
