#pragma once

#include <string>
#include <vector>

namespace tavrel::support {

/// Another program at the same X server, which changes the layout by running xrandr. Every call
/// blocks until xrandr has ended and throws std::runtime_error when it failed.
class OtherClient {
public:
    explicit OtherClient(std::string displayName);

    void switchOff(const std::string& output) const;
    /// All at once, in one run of xrandr.
    void switchOff(const std::vector<std::string>& outputs) const;
    /// With the output's preferred mode, where xrandr puts it.
    void switchOn(const std::string& output) const;
    void setMode(const std::string& output, const std::string& mode) const;
    void setPosition(const std::string& output, int x, int y) const;
    void setPrimary(const std::string& output) const;
    void showSameAs(const std::string& output, const std::string& original) const;
    /// Connects a monitor: another output of the dummy driver gets its first mode, shows it at
    /// this place, and counts as connected from now on, also when switched off.
    void connect(const std::string& output, int x, int y,
                 const std::string& mode = "1920x1080") const;
    void run(std::vector<std::string> arguments) const;

private:
    std::string displayName_;
};

}  // namespace tavrel::support
