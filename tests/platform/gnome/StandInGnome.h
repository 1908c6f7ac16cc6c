#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/gnome/SimulatedDisplayConfig.h"

namespace tavrel {

/// A compositor on a message bus that speaks as GNOME's does and shows nothing: for what a real
/// one doesn't do on demand. It answers from a thread of its own. From one thread.
class StandInGnome {
public:
    /// What becomes of a layout that is applied.
    enum class Answer {
        apply,
        /// An error of a kind that nobody expects.
        fail,
        /// The error that also says that the hardware has changed.
        deny,
        /// Said to be done, but nothing has changed.
        ignore,
    };

    /// Three monitors of 1920x1080 side by side, DP-1, DP-2 and DP-3, with serial numbers 1 to 3.
    /// Blocks until it can be asked. Throws std::runtime_error when the bus refuses.
    explicit StandInGnome(const std::string& busAddress);
    /// Blocks until it has left the bus.
    ~StandInGnome();
    StandInGnome(const StandInGnome&) = delete;
    StandInGnome& operator=(const StandInGnome&) = delete;

    /// What becomes of the next layouts; those after them are applied.
    void answerNext(std::vector<Answer> answers);
    /// From now on each question for its state is answered with an error, or no longer.
    void refuseToTell(bool isRefusing);

    gnome::MonitorState state();
    bool isOn(const std::string& connector);

    /// A change of the hardware, or by another program. Told to everybody.
    void change(const std::function<void(gnome::MonitorState&)>& change);
    void unplug(const std::string& connector);
    /// Comes on at the right of all others.
    void plug(gnome::Monitor monitor);
    /// The same, and it stays off.
    void plugOff(gnome::Monitor monitor);

private:
    struct Served;
    std::unique_ptr<Served> served_;
};

}  // namespace tavrel
