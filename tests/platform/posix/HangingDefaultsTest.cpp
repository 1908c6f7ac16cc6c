#include <gtest/gtest.h>

#include <future>

#include "platform/posix/AtomicFile.h"
#include "tests/platform/posix/BufferedUserDefaultsFixture.h"

namespace tavrel {
namespace {

using namespace std::chrono_literals;

/// A store below that does not return from a call before it is told to. Where somebody would
/// wait for that without limit, these tests never end.
class HangingDefaultsTest : public BufferedUserDefaultsTest {
protected:
    static BufferedUserDefaults::Options impatient() {
        return {.timeout = 20ms, .lookInterval = 0ms, .retryInterval = 1ms};
    }

    /// Opens the store with "old" in it, and lets it hang from then on.
    void hangAfterReading(const BufferedUserDefaults::Options& options = impatient()) {
        write(R"({"key":"old"})");
        open(options);
        ASSERT_TRUE(support::waitUntil([&] { return buffered->data("key") == "old"; }));
        trouble->begin(Kind::hangs);
    }
};

TEST_F(HangingDefaultsTest, MemoryAnswersWithoutWaiting) {
    // Whoever waits here waits for an hour.
    hangAfterReading({.timeout = std::chrono::hours(1), .lookInterval = 0ms});

    EXPECT_EQ(buffered->fromMemory().data("key"), "old");
    trouble->awaitHangingCall();
    EXPECT_EQ(buffered->fromMemory().data("key"), "old");
    EXPECT_EQ(buffered->fromMemory().data("missing"), std::nullopt);
}

TEST_F(HangingDefaultsTest, ReadingWaitsForATimeOnlyAndThenTellsWhatIsKnown) {
    hangAfterReading();

    EXPECT_EQ(buffered->data("key"), "old");
}

TEST_F(HangingDefaultsTest, WritingWaitsForATimeOnlyAndIsDoneWhenTheStoreGoesOn) {
    hangAfterReading();

    EXPECT_TRUE(buffered->setData("key", "new"));
    EXPECT_EQ(buffered->data("key"), "new");
    EXPECT_EQ(store.data("key"), "old");

    trouble->endTrouble();
    EXPECT_TRUE(isOnDisk("new"));
}

TEST_F(HangingDefaultsTest, WhoSetsFromMemoryDoesNotWait) {
    // Whoever waits here waits for an hour.
    hangAfterReading({.timeout = std::chrono::hours(1)});

    EXPECT_TRUE(buffered->fromMemory().setData("key", "new"));
    EXPECT_EQ(buffered->fromMemory().data("key"), "new");
    EXPECT_EQ(store.data("key"), "old");

    trouble->endTrouble();
    EXPECT_TRUE(isOnDisk("new"));
}

TEST_F(HangingDefaultsTest, SettlingWaitsForWhatIsOnItsWay) {
    hangAfterReading({.timeout = std::chrono::hours(1)});
    buffered->fromMemory().setData("key", "new");

    auto onDiskOnceSettled = std::async(std::launch::async, [this] {
        buffered->fromMemory().settle();
        return store.data("key");
    });
    // Long enough for whoever does not wait; who does is not done before the trouble ends.
    EXPECT_EQ(onDiskOnceSettled.wait_for(50ms), std::future_status::timeout);
    trouble->endTrouble();

    EXPECT_EQ(onDiskOnceSettled.get(), "new");
}

TEST_F(HangingDefaultsTest, SettlingWaitsForATimeOnly) {
    hangAfterReading();
    buffered->fromMemory().setData("key", "new");

    buffered->settle();

    EXPECT_EQ(store.data("key"), "old");
}

TEST_F(HangingDefaultsTest, OnlyTheFirstOneWaits) {
    // If each waited, they would take hours.
    hangAfterReading({.timeout = 1s});

    for (int i = 0; i < 10'000; ++i) {
        EXPECT_TRUE(buffered->setData("key", std::to_string(i)));
        EXPECT_EQ(buffered->data("key"), std::to_string(i));
    }
}

TEST_F(HangingDefaultsTest, WritesAreWaitedForAgainOnceTheStoreHasAnswered) {
    hangAfterReading({.timeout = 200ms, .retryInterval = 1ms});
    buffered->setData("key", "kept");
    trouble->endTrouble();
    ASSERT_TRUE(isOnDisk("kept"));

    int value = 0;
    EXPECT_TRUE(support::waitUntil([&] {
        const std::string next = std::to_string(++value);
        return buffered->setData("key", next) && store.data("key") == next;
    }));
}

TEST_F(HangingDefaultsTest, ReadsAreWaitedForAgainOnceTheStoreHasAnswered) {
    hangAfterReading({.timeout = 500ms});
    EXPECT_EQ(buffered->data("key"), "old");
    trouble->endTrouble();

    // Without waiting, luck may give what another has just written, but not as often as this.
    constexpr int often = 20;
    int value = 0;
    int inARow = 0;
    EXPECT_TRUE(support::waitUntil([&] {
        const std::string next = std::to_string(++value);
        const bool isSeen = store.setData("key", next) && buffered->data("key") == next;
        inARow = isSeen ? inARow + 1 : 0;
        return inARow == often;
    }));
}

TEST_F(HangingDefaultsTest, UpdateThatNobodyWaitsForAnyMoreIsWrittenWhateverOthersWrote) {
    hangAfterReading();
    buffered->update("key", [](const auto& old) { return old.value_or("") + " and new"; });

    store.setData("key", "other");
    trouble->endTrouble();

    EXPECT_TRUE(isOnDisk("old and new"));
}

TEST_F(HangingDefaultsTest, UpdateThatIsOvertakenAfterAllAreGoneIsWrittenAllTheSame) {
    hangAfterReading({.timeout = 200ms, .retryInterval = 1ms});
    trouble->endTrouble();

    buffered->update("key", [&](const auto& old) {
        trouble->begin(Kind::hangs);
        return old.value_or("") + " and new";
    });
    store.setData("key", "other");
    trouble->endTrouble();

    EXPECT_TRUE(isOnDisk("old and new"));
}

TEST_F(HangingDefaultsTest, StoreThatHangsFromTheStartIsEmptyUntilItIsRead) {
    write(R"({"key":"old"})");
    openWith(Kind::hangs, impatient());

    EXPECT_EQ(buffered->fromMemory().data("key"), std::nullopt);

    trouble->endTrouble();
    EXPECT_TRUE(support::waitUntil([&] { return buffered->fromMemory().data("key") == "old"; }));
}

TEST_F(HangingDefaultsTest, EndLeavesTheHangingCallBehind) {
    hangAfterReading();
    buffered->setData("key", "kept");
    trouble->awaitHangingCall();

    buffered.reset();

    trouble->endTrouble();
    EXPECT_TRUE(isOnDisk("kept"));
}

TEST_F(HangingDefaultsTest, LockThatAnotherHoldsDelaysTheWriteUntilItIsFree) {
    write(R"({"key":"old"})");
    BufferedUserDefaults own(
        std::make_unique<FileUserDefaults>(path, std::chrono::system_clock::now, 20ms),
        impatient());
    {
        const FileDescriptor held = AtomicFile::lock(beside(".lock"), 1s);
        ASSERT_TRUE(held.isOpen());

        EXPECT_TRUE(own.setData("key", "new"));
        EXPECT_EQ(own.data("key"), "new");
        EXPECT_EQ(store.data("key"), "old");
    }
    EXPECT_TRUE(isOnDisk("new"));
}

}  // namespace
}  // namespace tavrel
