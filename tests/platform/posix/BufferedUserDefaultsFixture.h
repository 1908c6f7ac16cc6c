#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/posix/BufferedUserDefaults.h"
#include "tests/platform/posix/FileUserDefaultsFixture.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {

/// What is wrong with a store below, to be changed while it is in use.
class StoreTrouble {
public:
    enum class Kind { none, refusesWrites, refusesAll, hangs };

    void begin(Kind kind) {
        const std::lock_guard guard(mutex_);
        kind_ = kind;
        changed_.notify_all();
    }
    void endTrouble() { begin(Kind::none); }

    /// Blocks while the store hangs; what is wrong then.
    Kind pass() {
        std::unique_lock lock(mutex_);
        ++waiting_;
        changed_.notify_all();
        changed_.wait(lock, [&] { return kind_ != Kind::hangs; });
        --waiting_;
        return kind_;
    }
    /// Blocks until a call hangs in the store.
    void awaitHangingCall() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return waiting_ > 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    Kind kind_ = Kind::none;
    int waiting_ = 0;
};

/// A store in a file that refuses and hangs when it is told to.
class TroubledStore : public BlockingUserDefaults {
public:
    TroubledStore(const std::filesystem::path& path, std::shared_ptr<StoreTrouble> trouble)
        : store_(path), trouble_(std::move(trouble)) {}

    std::optional<Texts> all() override {
        return trouble_->pass() == StoreTrouble::Kind::refusesAll ? std::nullopt : store_.all();
    }
    std::optional<std::string> data(std::string_view key) override {
        trouble_->pass();
        return store_.data(key);
    }
    bool setData(std::string_view key, std::string_view bytes) override {
        return trouble_->pass() == StoreTrouble::Kind::none && store_.setData(key, bytes);
    }
    bool update(std::string_view key, const Change& change) override {
        return trouble_->pass() == StoreTrouble::Kind::none && store_.update(key, change);
    }
    bool canHold(std::string_view key, std::string_view bytes) const override {
        return store_.canHold(key, bytes);
    }

private:
    FileUserDefaults store_;
    const std::shared_ptr<StoreTrouble> trouble_;
};

/// A buffered store above one that can be given trouble. `store` is another process's way to
/// the same file.
class BufferedUserDefaultsTest : public FileUserDefaultsTest {
protected:
    using Kind = StoreTrouble::Kind;

    ~BufferedUserDefaultsTest() override { trouble->endTrouble(); }

    /// For tests in which nothing is to be kept waiting, however slow the machine.
    static BufferedUserDefaults::Options patient() { return {.timeout = std::chrono::hours(1)}; }

    void open(BufferedUserDefaults::Options options = patient()) {
        buffered = std::make_unique<BufferedUserDefaults>(
            std::make_unique<TroubledStore>(path, trouble), std::move(options));
    }
    /// The same with trouble from the first moment.
    void openWith(Kind kind, BufferedUserDefaults::Options options = patient()) {
        trouble->begin(kind);
        open(std::move(options));
    }

    bool isOnDisk(const std::string& value) {
        return support::waitUntil([&] { return store.data("key") == value; });
    }

    const std::shared_ptr<StoreTrouble> trouble = std::make_shared<StoreTrouble>();
    std::unique_ptr<BufferedUserDefaults> buffered;
};

}  // namespace tavrel
