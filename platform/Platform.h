#pragma once

namespace tavrel {

class BackgroundQueue;
class DisplayQueries;
class DisplaySwitch;
class MainQueue;
class NotificationCenter;
class ReconfigurationReports;
class UserDefaults;
class WallClock;

/// All that the core asks of the system it runs on. Whoever composes the application
/// owns the parts and keeps them alive until the last background job has ended.
struct Platform {
    DisplaySwitch& displaySwitch;
    DisplayQueries& queries;
    ReconfigurationReports& reports;
    UserDefaults& userDefaults;
    WallClock& wallClock;
    MainQueue& mainQueue;
    BackgroundQueue& backgroundQueue;
    NotificationCenter& notificationCenter;

    /// The same platform with another switch, one that stands before this one's for example.
    Platform with(DisplaySwitch& other) const {
        return {.displaySwitch = other,
                .queries = queries,
                .reports = reports,
                .userDefaults = userDefaults,
                .wallClock = wallClock,
                .mainQueue = mainQueue,
                .backgroundQueue = backgroundQueue,
                .notificationCenter = notificationCenter};
    }
};

}  // namespace tavrel
