#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"

namespace tavrel::support {

/// The process of a Wayland compositor, with a folder for all it keeps. Its socket there is called
/// "wayland". To be used on the thread that created it.
class WaylandCompositor {
public:
    /// `janitor` must outlive it.
    WaylandCompositor(std::filesystem::path folder, Janitor& janitor);
    ~WaylandCompositor();
    WaylandCompositor(const WaylandCompositor&) = delete;
    WaylandCompositor& operator=(const WaylandCompositor&) = delete;

    /// As in the WAYLAND_DISPLAY variable: a path.
    std::string displayName() const { return (folder_ / "wayland").string(); }

    /// While it runs.
    pid_t pid() const { return process_->pid(); }

    /// Where programs look for their files: in the folder.
    Environment environment() const;

    /// Blocks until `answers` is true; that the bus has nobody to answer yet is no error. Throws
    /// std::runtime_error with the compositor's messages when it does not come up.
    void start(const std::vector<std::string>& command, const Environment& environment,
               const std::function<bool()>& answers);

    /// Holds it up: it takes in what is said to it, and does and answers nothing.
    void pause() const;
    void resume() const;
    /// Kills it and blocks until it is gone; its clients lose their connection.
    void kill();

private:
    const std::filesystem::path folder_;
    Janitor& janitor_;
    std::unique_ptr<ChildProcess> process_;
};

}  // namespace tavrel::support
