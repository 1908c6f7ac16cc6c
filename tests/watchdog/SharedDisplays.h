#pragma once

#include <atomic>
#include <filesystem>
#include <memory>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"

namespace tavrel::watchdog {

/// Four displays, 1 to 4, shared by all processes that open the same file.
class SharedDisplays : public DisplaySwitch, public DisplayQueries {
public:
    /// The environment variable that tells programs started by a test which file it is.
    static constexpr const char* variable = "TAVREL_TEST_DISPLAYS";
    static constexpr DisplayID last = 4;

    /// Opens the file, making it with all displays on. Throws std::runtime_error.
    explicit SharedDisplays(const std::filesystem::path& path);
    /// The file that `variable` names.
    static SharedDisplays ofEnvironment();
    ~SharedDisplays() override;
    SharedDisplays(const SharedDisplays&) = delete;
    SharedDisplays& operator=(const SharedDisplays&) = delete;

    bool isOn(DisplayID display) const { return !state_->isOff[display]; }
    int onCount() const;

    /// The next process to switch a display dies of SIGKILL before or after doing so.
    enum class CrashPoint { none, before, after };
    void setCrashPoint(CrashPoint point) { state_->crashPoint = point; }

    bool canSwitch() override { return true; }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;
    std::unique_ptr<DisplayMoment> now() override;
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return now(); }

private:
    class Moment;

    /// All zero at first, as a new file is.
    struct State {
        std::atomic<bool> isOff[last + 1];
        std::atomic<CrashPoint> crashPoint;
    };
    void crashIfSetTo(CrashPoint point);

    State* state_;
};

}  // namespace tavrel::watchdog
