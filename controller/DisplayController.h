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
#include "registry/DisplayRegistry.h"
#include "registry/StoredDisplay.h"

namespace tavrel {

/// The application's view of the displays: what is listed, what the user is told, and
/// everything that is done about it.
///
/// Main thread only, which a debug build asserts. Slow platform work runs on the
/// background queue and returns its outcome by the main queue. A running job keeps the
/// controller alive; whichever thread releases it last, it is destroyed on the main thread.
///
/// No operation throws or returns an error: outcomes are the two texts `statusMessage`
/// (never empty) and `errorMessage`.
class DisplayController : public std::enable_shared_from_this<DisplayController> {
public:
    /// Creates a controller that watches the displays, and starts its first refresh. The
    /// platform must outlive it and its jobs.
    static std::shared_ptr<DisplayController> create(const Platform& platform);

    DisplayController(const DisplayController&) = delete;
    DisplayController& operator=(const DisplayController&) = delete;

    // ---- Published fields: each write sends `objectWillChange` first.

    ObjectWillChange& objectWillChange() { return objectWillChange_; }

    /// The displays as last listed; switches and wake all edit the entries in place.
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

    /// Lists the displays again and then shows `successMessage`, or how many there are.
    /// Ignored, with its message, while a refresh is running.
    void refresh(std::optional<std::string> successMessage);

    /// Switches `display` on or off. Does nothing when the value passed in is busy or
    /// already in that state; refuses to switch off while no other listed display is online
    /// and active. Otherwise opens the two seconds of `suppressTopologyRestore`.
    void set(const DisplayDevice& display, bool isOn);

    /// Enables every listed display, one after the other; with none listed, refreshes.
    void wakeAll();

    // ---- Keeping a usable display.

    /// Starts a restoration when displays are remembered and none is online and active. Called each
    /// second; may go by an answer that is a moment old (`DisplayQueries::lately`).
    void ensureAtLeastOneUsableDisplay();

    /// Handles one report of the window server, whichever display it names.
    void handleDisplayReconfiguration(DisplayID display, std::uint32_t flags);

    /// Starts a restoration 0.6 s after the last call.
    void scheduleTopologyRecovery();

    /// Enables every remembered display that is not online and active, checks 0.45 s later
    /// whether one of them is now, and shows the outcome; opens the two seconds of
    /// `suppressTopologyRestore`. With nothing remembered it only refreshes. Ignored while a
    /// restoration is running.
    void restoreSafeLayout(const std::string& successMessage);

    /// What texts for the user call the system and its keys.
    const Words& words() const { return platform_.words; }

    // ---- The controller's own state.

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

    /// As `ensureAtLeastOneUsableDisplay`, but asks the server anew: for when the layout has just
    /// changed.
    void checkForLostDisplay();
    using Ask = std::unique_ptr<DisplayMoment> (DisplayQueries::*)();
    void restoreUnlessUsable(Ask ask);

    /// Whether the display is online and active. From any thread.
    static bool isLive(DisplayMoment& moment, DisplayID display);
    static bool anyIsLive(const std::vector<StoredDisplay>& displays, DisplayMoment& moment);
    bool anyOtherDisplayIsLive(const DisplayDevice& display) const;
    /// From now on, and for two seconds, reports of added and removed displays are taken for
    /// consequences of a change of our own.
    void suppressTopologyRestore();

    friend void displayReconfigurationCallback(DisplayID, std::uint32_t, void*);
    void hopToMainThread(DisplayID display, std::uint32_t flags);

    const Platform platform_;
    KnownDisplays known_;
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

/// Passes one report on to the controller that `userInfo` points to, on the main thread.
/// From any thread; a null `userInfo` is ignored.
void displayReconfigurationCallback(DisplayID display, std::uint32_t flags, void* userInfo);

}  // namespace tavrel
