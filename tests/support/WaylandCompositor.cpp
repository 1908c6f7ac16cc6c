#include "tests/support/WaylandCompositor.h"

#include <csignal>
#include <stdexcept>
#include <utility>

#include "tests/support/DBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

namespace tavrel::support {

WaylandCompositor::WaylandCompositor(std::filesystem::path folder, Janitor& janitor)
    : folder_(std::move(folder)), janitor_(janitor) {}

WaylandCompositor::~WaylandCompositor() {
    kill();
}

Environment WaylandCompositor::environment() const {
    Environment environment = bareEnvironment();
    environment["HOME"] = folder_.string();
    environment["XDG_RUNTIME_DIR"] = folder_.string();
    environment["XDG_CONFIG_HOME"] = (folder_ / "config").string();
    environment["XDG_CACHE_HOME"] = (folder_ / "cache").string();
    environment["XDG_DATA_HOME"] = (folder_ / "data").string();
    return environment;
}

void WaylandCompositor::start(const std::vector<std::string>& command,
                              const Environment& environment,
                              const std::function<bool()>& answers) {
    const auto errors = folder_ / "compositor.err";
    process_ = std::make_unique<ChildProcess>(ChildProcess::Options{.command = command,
                                                                    .environment = environment,
                                                                    .standardOutput = {},
                                                                    .standardError = errors,
                                                                    .descriptorThree = -1});
    janitor_.watchGroup(process_->pid());
    const bool isUp = waitUntil([&] {
        try {
            return !process_->isRunning() || answers();
        } catch (const DBusError&) {
            return !process_->isRunning();
        }
    });
    if (!isUp || !process_->isRunning()) {
        throw std::runtime_error(command.front() + " did not come up:\n" + readFile(errors));
    }
}

void WaylandCompositor::pause() const {
    process_->signal(SIGSTOP);
}

void WaylandCompositor::resume() const {
    process_->signal(SIGCONT);
}

void WaylandCompositor::kill() {
    if (process_ == nullptr) {
        return;
    }
    const pid_t leader = process_->pid();
    process_->killFamily();
    process_.reset();
    janitor_.forgetGroup(leader);
    std::filesystem::remove(displayName());
    std::filesystem::remove(displayName() + ".lock");
}

}  // namespace tavrel::support
