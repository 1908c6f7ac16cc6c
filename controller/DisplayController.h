#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "controller/ObjectWillChange.h"
#include "display/DisplayDevice.h"
#include "display/DisplayError.h"
#include "platform/DisplayQueries.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/Platform.h"
#include "platform/WallClock.h"
#include "platform/WorkItem.h"
#include "registry/StoredDisplay.h"

namespace tavrel {

/// The application's view of the displays: what is listed, what the user is told, and
/// everything that is done about it.
///
/// Main thread only, which a debug build asserts. Slow platform work runs on the
/// background queue and comes back by the main queue. A job in flight keeps the
/// controller alive; whoever lets go last, it is destroyed on the main thread.
///
/// No operation fails loudly: outcomes are the two texts `statusMessage` (never empty)
/// and `errorMessage`.
class DisplayController : public std::enable_shared_from_this<DisplayController> {
public:
    /// Makes a controller that watches the displays from now on, and starts its first
    /// refresh. The platform must outlive it and its jobs.
    static std::shared_ptr<DisplayController> create(const Platform& platform);

    DisplayController(const DisplayController&) = delete;
    DisplayController& operator=(const DisplayController&) = delete;

    // ---- Published fields: each write sends `objectWillChange` first.

    ObjectWillChange& objectWillChange() { return objectWillChange_; }

    /// The displays as last listed, edited in place by switches and wake all.
    const std::vector<DisplayDevice>& displays() const;
    void setDisplays(std::vector<DisplayDevice> displays);

    bool isRefreshing() const;
    void setIsRefreshing(bool isRefreshing);

    const std::string& statusMessage() const;
    void setStatusMessage(std::string statusMessage);

    /// The detail of the last failure; cleared when a refresh, an accepted switch or a
    /// wake all starts.
    const std::optional<std::string>& errorMessage() const;
    void setErrorMessage(std::optional<std::string> errorMessage);

    // ---- What the user can do. All return at once.

    /// Lists the displays anew. Dropped, with its message, while a refresh is running.
    void refresh(std::optional<std::string> successMessage);

    /// Takes `display` into the desktop or out of it. Does nothing when that copy is
    /// busy or already so; refuses to switch off while no other listed display is live.
    void set(const DisplayDevice& display, bool isOn);

    /// Enables every listed display, one after the other; with none listed, refreshes.
    void wakeAll();

    // ---- Keeping a usable display.

    /// Restores a layout when no remembered display is online and active.
    void ensureAtLeastOneUsableDisplay();

    /// One report of the window server, whatever display it names.
    void handleDisplayReconfiguration(DisplayID display, std::uint32_t flags);

    /// Restores the layout 0.6 s after the last call.
    void scheduleTopologyRecovery();

    /// Enables every remembered display that is not online and active, looks 0.45 s
    /// later whether that helped, and says so. Dropped while one is running.
    void restoreSafeLayout(const std::string& successMessage);

    // ---- For those who watch the controller rather than the displays.

    bool displayCallbackRegistered() const;
    bool isAutomaticRecoveryRunning() const;
    WallTime suppressTopologyRestoreUntil() const;

private:
    explicit DisplayController(const Platform& platform);
    ~DisplayController();

    void start();

    void assertMainThread() const;
    /// Edits the first listed display with this `id` in place, if there is one.
    void editDisplay(const std::string& id, const std::function<void(DisplayDevice&)>& edit);

    using RefreshOutcome = std::variant<std::vector<DisplayDevice>, std::string>;
    void finishRefresh(const RefreshOutcome& outcome,
                       const std::optional<std::string>& successMessage);
    void finishSwitch(const DisplayDevice& display, bool isOn,
                      const std::optional<DisplayError>& error);
    void finishWakeAll(const std::vector<DisplayDevice>& snapshot,
                       const std::vector<std::string>& failedNames);
    void verifyRestoration(const std::vector<StoredDisplay>& candidates,
                           const std::string& successMessage);

    /// Online and active, by the platform's own answers. From any thread.
    static bool isLive(DisplayMoment& moment, DisplayID display);
    bool anyIsLive(const std::vector<StoredDisplay>& displays) const;
    bool anyOtherDisplayIsLive(const DisplayDevice& display) const;

    friend void displayReconfigurationCallback(DisplayID, std::uint32_t, void*);
    void hopToMainThread(DisplayID display, std::uint32_t flags);

    const Platform platform_;
    ObjectWillChange objectWillChange_;

    std::vector<DisplayDevice> displays_;
    bool isRefreshing_ = false;
    std::string statusMessage_;
    std::optional<std::string> errorMessage_;

    std::optional<ObserverToken> wakeObserver_;
    bool displayCallbackRegistered_ = false;
    std::shared_ptr<WorkItem> topologyRecoveryWorkItem_;
    std::unique_ptr<RepeatingTimer> safetyTimer_;
    WallTime suppressTopologyRestoreUntil_ = WallTime::distantPast();
    bool isAutomaticRecoveryRunning_ = false;
};

/// Hands one report to the controller that `userInfo` points to, on the main thread.
/// From any thread; a null `userInfo` is ignored.
void displayReconfigurationCallback(DisplayID display, std::uint32_t flags, void* userInfo);

}  // namespace tavrel
