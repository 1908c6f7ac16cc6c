#pragma once

#include <memory>
#include <mutex>
#include <thread>

#include "platform/posix/BlockingUserDefaults.h"
#include "platform/posix/StoreThread.h"

namespace tavrel {

/// A store that goes on when the one below it refuses or hangs: it answers from memory, and a
/// thread of its own does all reading and writing below.
///
/// What cannot be written is kept, read from memory for as long as this object lives, and
/// written as soon as that is possible: it is tried again with each further write, after each
/// retry interval, and when this object ends. It then replaces what others may have written
/// under that key meanwhile. While the store below cannot be read, what it said last still
/// holds. Only what is on the disk outlives this process.
///
/// `setData` returns when the value is on the disk, or is known not to get there now; it and
/// `data` wait for the store below, but no longer than the timeout. A store that has used
/// that up keeps nobody waiting until it has answered, so a hanging one delays once.
class BufferedUserDefaults : public UserDefaults {
public:
    using Options = StoreThreadOptions;

    /// Starts to read `store`, which nobody else may use.
    explicit BufferedUserDefaults(std::unique_ptr<BlockingUserDefaults> store,
                                  Options options = {});
    /// Waits until all is written, no longer than the timeout. A thread that still hangs in
    /// the store below is left behind with it.
    ~BufferedUserDefaults() override;
    BufferedUserDefaults(const BufferedUserDefaults&) = delete;
    BufferedUserDefaults& operator=(const BufferedUserDefaults&) = delete;

    std::optional<std::string> data(std::string_view key) override;
    bool setData(std::string_view key, std::string_view bytes) override;
    /// Calls `change` once more where that leaves the value as it is, after a look at the store.
    bool update(std::string_view key, const Change& change) override;
    void settle() override;

    /// The same store for threads that must not wait: `data` answers from memory and only asks
    /// for a look at the store, so what another process wrote shows at a later call. The very
    /// first answer is waited for, like any other. `setData` returns when the value is on its way.
    /// Lives as long as this object.
    UserDefaults& fromMemory() { return fromMemory_; }

private:
    class FromMemory : public UserDefaults {
    public:
        explicit FromMemory(BufferedUserDefaults& whole) : whole_(whole) {}
        std::optional<std::string> data(std::string_view key) override;
        bool setData(std::string_view key, std::string_view bytes) override;
        bool update(std::string_view key, const Change& change) override;
        void settle() override { whole_.settle(); }

    private:
        BufferedUserDefaults& whole_;
    };

    const std::shared_ptr<StoreThread> store_;
    std::thread thread_;
    /// Held while a value is changed, so that changes come one after the other.
    std::mutex changing_;
    FromMemory fromMemory_{*this};
};

}  // namespace tavrel
