#pragma once

namespace tavrel {

class BackgroundQueue;
class DisplayLifecycle;
class DisplayQueries;
class MainQueue;
class NotificationCenter;
class ReconfigurationReports;
class UserDefaults;
class WallClock;

/// All that the core asks of the system it runs on. Whoever composes the application
/// owns the parts and keeps them alive until the last background job has ended.
struct Platform {
    DisplayLifecycle& lifecycle;
    DisplayQueries& queries;
    ReconfigurationReports& reports;
    UserDefaults& userDefaults;
    WallClock& wallClock;
    MainQueue& mainQueue;
    BackgroundQueue& backgroundQueue;
    NotificationCenter& notificationCenter;
};

}  // namespace tavrel
