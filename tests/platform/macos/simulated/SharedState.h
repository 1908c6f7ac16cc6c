#pragma once

#include <filesystem>
#include <functional>

#include "tests/platform/macos/simulated/State.h"

namespace tavrel::simulatedMac {

/// The state of one simulated Mac. Thread-safe, also against other processes and against
/// their being killed.
class SharedState {
public:
    /// The environment variable that tells a process which file its Mac is in.
    static constexpr const char* variable = "TAVREL_TEST_MAC";

    /// A Mac that all processes share that open the same file; the first makes it. Without
    /// a path, one of this process alone. Throws std::runtime_error.
    explicit SharedState(const std::filesystem::path& path = {});
    ~SharedState();
    SharedState(const SharedState&) = delete;
    SharedState& operator=(const SharedState&) = delete;

    /// The Mac this process runs on.
    static SharedState& ofThisProcess();

    /// Runs `use` while nobody else uses the state. Gives what that returns.
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

/// What this process is to be answered now; 0 where it is not to be refused.
std::int32_t refusal(Refusal which);

}  // namespace tavrel::simulatedMac
