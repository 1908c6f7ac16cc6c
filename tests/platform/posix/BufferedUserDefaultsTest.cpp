#include "platform/posix/BufferedUserDefaults.h"

#include <gtest/gtest.h>

#include <atomic>

#include "tests/platform/posix/BufferedUserDefaultsFixture.h"
#include "tests/platform/posix/ForkedProcess.h"

namespace tavrel {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::hours never{24};

BufferedUserDefaults::Options retryingAfter(std::chrono::milliseconds interval) {
    return {.timeout = 1h, .retryInterval = interval};
}

TEST_F(BufferedUserDefaultsTest, ReadsWhatTheFileHeldBefore) {
    write(R"({"key":"old"})");
    open();

    EXPECT_EQ(buffered->fromMemory().data("key"), "old");
    EXPECT_EQ(buffered->data("key"), "old");
    EXPECT_EQ(buffered->data("missing"), std::nullopt);
}

TEST_F(BufferedUserDefaultsTest, WhatIsSetIsOnTheDiskWhenThatReturns) {
    open();

    EXPECT_TRUE(buffered->setData("key", "first"));
    EXPECT_EQ(store.data("key"), "first");
}

TEST_F(BufferedUserDefaultsTest, WhatIsSetFromMemoryIsThereAtOnceAndOnTheDiskWhenItHasSettled) {
    open();

    EXPECT_TRUE(buffered->fromMemory().setData("key", "value"));
    EXPECT_EQ(buffered->fromMemory().data("key"), "value");

    buffered->fromMemory().settle();
    EXPECT_EQ(store.data("key"), "value");
}

TEST_F(BufferedUserDefaultsTest, HasSettledWhenAWriteIsRefused) {
    // Whoever waits here waits for an hour.
    openWith(Kind::refusesWrites, retryingAfter(never));
    buffered->fromMemory().setData("key", "value");

    buffered->settle();

    EXPECT_EQ(buffered->data("key"), "value");
    EXPECT_EQ(store.data("key"), std::nullopt);
}

TEST_F(BufferedUserDefaultsTest, WriteByAnotherProcessIsSeenAtOnceOrLaterFromMemory) {
    open({.timeout = 1h, .lookInterval = 0ms});
    buffered->setData("key", "own");

    store.setData("key", "other");
    EXPECT_EQ(buffered->data("key"), "other");

    store.setData("key", "another");
    EXPECT_TRUE(
        support::waitUntil([&] { return buffered->fromMemory().data("key") == "another"; }));
}

TEST_F(BufferedUserDefaultsTest, MemoryIsNotComparedWithTheDiskEachTime) {
    open({.timeout = 1h, .lookInterval = never});
    buffered->setData("key", "own");

    store.setData("key", "other");
    EXPECT_EQ(buffered->fromMemory().data("key"), "own");
    buffered->setData("unrelated", "value");
    EXPECT_EQ(buffered->fromMemory().data("key"), "own");
}

TEST_F(BufferedUserDefaultsTest, AnUpdateLeavesNothingAsItIsByWhatItOnlyRemembers) {
    open({.timeout = 1h, .lookInterval = never});
    buffered->setData("key", "own");
    store.setData("key", "other");

    EXPECT_TRUE(buffered->update("key", [](const auto& old) {
        return old == "own" ? std::nullopt : std::optional(old.value_or("") + " seen");
    }));

    EXPECT_EQ(store.data("key"), "other seen");
}

TEST_F(BufferedUserDefaultsTest, RefusesTextThatIsNotUTF8AndKeepsTheOldValue) {
    open();
    buffered->setData("key", "old");

    EXPECT_FALSE(buffered->setData("key", "\xff"));
    EXPECT_FALSE(buffered->setData("\xff", "value"));
    EXPECT_FALSE(buffered->update("key", [](const auto&) { return "\xff"; }));
    EXPECT_FALSE(buffered->fromMemory().setData("key", "\xff"));

    EXPECT_EQ(buffered->data("key"), "old");
}

TEST_F(BufferedUserDefaultsTest, WhatCannotBeWrittenIsReadFromMemory) {
    write(R"({"key":"old","other":"untouched"})");
    openWith(Kind::refusesWrites);

    EXPECT_TRUE(buffered->setData("key", "new"));

    EXPECT_EQ(buffered->data("key"), "new");
    EXPECT_EQ(buffered->fromMemory().data("key"), "new");
    EXPECT_EQ(buffered->data("other"), "untouched");
    EXPECT_EQ(store.data("key"), "old");
}

TEST_F(BufferedUserDefaultsTest, WhatWasKeptIsWrittenAsSoonAsThatIsPossible) {
    openWith(Kind::refusesWrites, retryingAfter(1ms));
    buffered->setData("key", "first");
    buffered->setData("key", "second");
    buffered->setData("other", "third");

    trouble->endTrouble();

    EXPECT_TRUE(isOnDisk("second"));
    EXPECT_TRUE(support::waitUntil([&] { return store.data("other") == "third"; }));
}

TEST_F(BufferedUserDefaultsTest, WhatWasKeptIsWrittenWithTheNextWrite) {
    openWith(Kind::refusesWrites, retryingAfter(never));
    buffered->setData("key", "kept");

    trouble->endTrouble();
    buffered->setData("other", "value");

    EXPECT_TRUE(isOnDisk("kept"));
}

TEST_F(BufferedUserDefaultsTest, WhatWasKeptIsWrittenAtTheEnd) {
    openWith(Kind::refusesWrites, retryingAfter(never));
    buffered->setData("key", "kept");

    trouble->endTrouble();
    buffered.reset();

    EXPECT_EQ(store.data("key"), "kept");
}

TEST_F(BufferedUserDefaultsTest, WhatOthersWroteAfterAKeptValueWasWrittenIsSeen) {
    openWith(Kind::refusesWrites, retryingAfter(1ms));
    buffered->setData("key", "kept");
    trouble->endTrouble();
    ASSERT_TRUE(isOnDisk("kept"));

    store.setData("key", "other");

    EXPECT_EQ(buffered->data("key"), "other");
}

TEST_F(BufferedUserDefaultsTest, SaysOnceThatItCannotWrite) {
    std::atomic<int> said = 0;
    auto options = retryingAfter(1ms);
    options.onUnwritable = [&] { ++said; };
    open(options);
    buffered->setData("key", "written");
    EXPECT_EQ(said, 0);

    trouble->begin(Kind::refusesWrites);
    buffered->setData("key", "kept");
    buffered->setData("other", "kept");
    trouble->endTrouble();
    ASSERT_TRUE(isOnDisk("kept"));
    trouble->begin(Kind::refusesWrites);
    buffered->setData("key", "kept again");
    buffered.reset();

    EXPECT_EQ(said, 1);
}

TEST_F(BufferedUserDefaultsTest, WhatWasReadHoldsWhileTheStoreCannotBeRead) {
    write(R"({"key":"old"})");
    open();
    EXPECT_EQ(buffered->data("key"), "old");

    trouble->begin(Kind::refusesAll);
    store.setData("key", "unseen");
    EXPECT_EQ(buffered->data("key"), "old");

    trouble->endTrouble();
    EXPECT_EQ(buffered->data("key"), "unseen");
}

TEST_F(BufferedUserDefaultsTest, WhatWasWrittenHoldsWhileTheFolderIsMissing) {
    open();
    buffered->setData("key", "value");

    std::filesystem::remove_all(path.parent_path());
    EXPECT_EQ(buffered->data("key"), "value");

    std::filesystem::create_directory(path.parent_path());
    EXPECT_EQ(buffered->data("key"), std::nullopt);
}

TEST_F(BufferedUserDefaultsTest, UpdateMakesTheNewValueOfTheOldOne) {
    const auto append = [](const auto& old) { return old.value_or("") + "x"; };
    open();

    EXPECT_TRUE(buffered->update("key", append));
    EXPECT_TRUE(buffered->fromMemory().update("key", append));
    EXPECT_TRUE(buffered->update("key", [](const auto&) { return std::nullopt; }));

    EXPECT_EQ(store.data("key"), "xx");
}

TEST_F(BufferedUserDefaultsTest, UpdateIsMadeAnewWhenAnotherProcessWroteMeanwhile) {
    int calls = 0;
    open();
    buffered->setData("key", "old");

    buffered->update("key", [&](const auto& old) {
        if (++calls == 1) {
            EXPECT_TRUE(store.setData("key", "other"));
        }
        return old.value_or("") + " and new";
    });

    EXPECT_EQ(calls, 2);
    EXPECT_EQ(store.data("key"), "other and new");
}

TEST_F(BufferedUserDefaultsTest, UpdateOfAKeptValueGoesOnFromThat) {
    openWith(Kind::refusesWrites, retryingAfter(1ms));
    buffered->setData("key", "kept");

    buffered->update("key", [&](const auto& old) { return old.value_or("") + " and new"; });
    EXPECT_EQ(buffered->data("key"), "kept and new");

    trouble->endTrouble();
    EXPECT_TRUE(isOnDisk("kept and new"));
}

TEST_F(BufferedUserDefaultsTest, UpdateOfAKeptValueGoesOnFromThatWhenTheStoreCanBeWrittenAgain) {
    write(R"({"key":"old"})");
    openWith(Kind::refusesWrites, retryingAfter(never));
    buffered->setData("key", "kept");

    trouble->endTrouble();
    buffered->update("key", [&](const auto& old) { return old.value_or("") + " and new"; });

    EXPECT_EQ(store.data("key"), "kept and new");
}

TEST_F(BufferedUserDefaultsTest, TwoProcessesChangingOneValueLoseNoChange) {
    constexpr int changesEach = 40;
    const auto add = [&] {
        using std::chrono::minutes;
        BufferedUserDefaults own(
            std::make_unique<FileUserDefaults>(path, std::chrono::system_clock::now, minutes(5)),
            {.timeout = minutes(5)});
        for (int i = 0; i < changesEach; ++i) {
            own.update("sum", [](const auto& old) {
                return std::to_string(std::stoi(old.value_or("0")) + 1);
            });
        }
        return 0;
    };

    ForkedProcess first(add);
    ForkedProcess second(add);

    EXPECT_EQ(add(), 0);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_EQ(store.data("sum"), std::to_string(3 * changesEach));
}

}  // namespace
}  // namespace tavrel
