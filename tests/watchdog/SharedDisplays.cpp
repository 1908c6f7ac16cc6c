#include "tests/watchdog/SharedDisplays.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::watchdog {

class SharedDisplays::Moment : public DisplayMoment {
public:
    explicit Moment(const SharedDisplays& displays) : displays_(displays) {}

    std::optional<std::vector<DisplayID>> allDisplays() override { return onlineDisplays(); }
    std::optional<std::vector<DisplayID>> onlineDisplays() override {
        std::vector<DisplayID> all(last);
        std::iota(all.begin(), all.end(), 1);
        return all;
    }
    bool isBuiltIn(DisplayID /*display*/) override { return false; }
    bool isOnline(DisplayID display) override { return display >= 1 && display <= last; }
    bool isActive(DisplayID display) override {
        return isOnline(display) && displays_.isOn(display);
    }
    std::uint32_t vendorNumber(DisplayID /*display*/) override { return 0; }
    std::uint32_t modelNumber(DisplayID /*display*/) override { return 0; }
    std::uint32_t serialNumber(DisplayID /*display*/) override { return 0; }

private:
    const SharedDisplays& displays_;
};

SharedDisplays::SharedDisplays(const std::filesystem::path& path) {
    const FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!file.isOpen() || ftruncate(file.number(), sizeof(State)) != 0) {
        throw std::runtime_error("no file for displays: " + path.string());
    }
    void* memory =
        mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED, file.number(), 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no memory for displays: " + path.string());
    }
    state_ = static_cast<State*>(memory);
}

SharedDisplays SharedDisplays::ofEnvironment() {
    const char* path = std::getenv(variable);
    return SharedDisplays(path == nullptr ? "" : path);
}

SharedDisplays::~SharedDisplays() {
    munmap(state_, sizeof(State));
}

int SharedDisplays::onCount() const {
    return static_cast<int>(std::count_if(std::begin(state_->isOff) + 1, std::end(state_->isOff),
                                          [](const auto& isOff) { return !isOff; }));
}

ServerStatus SharedDisplays::setDisplayEnabled(DisplayID display, bool enabled) {
    if (display == 0 || display > last) {
        return serverStatus::illegalArgument;
    }
    crashIfSetTo(CrashPoint::before);
    state_->isOff[display] = !enabled;
    crashIfSetTo(CrashPoint::after);
    return serverStatus::success;
}

std::unique_ptr<DisplayMoment> SharedDisplays::now() {
    return std::make_unique<Moment>(*this);
}

void SharedDisplays::crashIfSetTo(CrashPoint point) {
    if (state_->crashPoint.compare_exchange_strong(point, CrashPoint::none)) {
        kill(getpid(), SIGKILL);
    }
}

}  // namespace tavrel::watchdog
