#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "watchdog/application/RunningWatchdog.h"
#include "watchdog/protocol/MessageSocket.h"

namespace tavrel::watchdog {

/// A watchdog that is a child process: out of reach of a terminal's signals and of signals
/// to the application's process group, with none of its files but the connection.
class WatchdogProcess : public RunningWatchdog {
public:
    /// Runs `executable`, passing it the number of its end of the connection, which has the
    /// `first` messages in it by then, and the name of the window server to use unless that is
    /// empty. Null when the system cannot; an executable that ends at once may also show as a
    /// lost connection.
    static std::unique_ptr<WatchdogProcess> start(const std::filesystem::path& executable,
                                                  const std::vector<Message>& first = {},
                                                  std::string windowServer = {});

    WatchdogProcess(MessageSocket link, pid_t pid);
    ~WatchdogProcess() override;
    WatchdogProcess(const WatchdogProcess&) = delete;
    WatchdogProcess& operator=(const WatchdogProcess&) = delete;

    MessageSocket& link() override { return *link_; }
    int descriptor() const override { return link_->descriptor(); }
    void dismiss() override;
    void kill() override;

    pid_t pid() const { return pid_; }

private:
    /// Blocks until it has ended, but no longer than `timeout`. Returns whether it has.
    bool awaitEnd(std::chrono::milliseconds timeout);

    /// std::nullopt once closed.
    std::optional<MessageSocket> link_;
    pid_t pid_;
    /// Whether its number may be that of another process by now.
    bool isReaped_ = false;
    bool isKilled_ = false;
};

/// The watchdog's executable, looked for from the folder of the application's own: in the
/// libexec folder of the build tree or of the installation, or beside it as in a Mac's
/// bundle. Empty when there is none; it cannot be started then.
std::filesystem::path findWatchdog(const std::filesystem::path& applicationFolder);

}  // namespace tavrel::watchdog
