#pragma once

#include <filesystem>
#include <functional>

#include "tests/platform/macos/simulated/State.h"

namespace tavrel::simulatedMac {

/// The state of one simulated Mac. Thread-safe, also between processes, even when one of them
/// is killed.
class SharedState {
public:
    /// The environment variable that names the file of a process's Mac.
    static constexpr const char* variable = "TAVREL_TEST_MAC";

    /// Opens the Mac that is shared by all processes that open this file; the first creates
    /// it. Without a path, makes one for this process alone. Throws std::runtime_error.
    explicit SharedState(const std::filesystem::path& path = {});
    ~SharedState();
    SharedState(const SharedState&) = delete;
    SharedState& operator=(const SharedState&) = delete;

    /// The Mac that this process runs on.
    static SharedState& ofThisProcess();

    /// Calls `use` with the state while nobody else uses it, and returns its result.
    template <typename Use>
    auto with(const Use& use) {
        const Lock lock(*this);
        return use(block_->state);
    }

private:
    struct Block {
        pthread_mutex_t mutex;
        State state;
    };

    class Lock {
    public:
        explicit Lock(SharedState& shared);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        Block& block_;
    };

    Block* block_;
};

/// The status that such a call must return now; 0 when it is not refused.
std::int32_t refusal(Refusal which);

}  // namespace tavrel::simulatedMac
