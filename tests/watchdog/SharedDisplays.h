#pragma once

#include <atomic>
#include <filesystem>

#include "platform/DisplaySwitch.h"

namespace tavrel::watchdog {

/// Four displays, 1 to 4, that all processes that open the same file see and switch.
class SharedDisplays : public DisplaySwitch {
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
    /// How many changes have been made, by whomever.
    int changes() const { return state_->changes; }

    /// The next process to switch dies of SIGKILL at this point of it.
    enum class Trap { none, before, after };
    void setTrap(Trap trap) { state_->trap = trap; }

    bool canSwitch() override { return true; }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

private:
    /// All zero at first, as a new file is.
    struct State {
        std::atomic<bool> isOff[last + 1];
        std::atomic<int> changes;
        std::atomic<Trap> trap;
    };
    void springIf(Trap trap);

    State* state_;
};

}  // namespace tavrel::watchdog
