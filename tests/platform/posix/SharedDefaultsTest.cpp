#include <gtest/gtest.h>

#include <thread>

#include "platform/posix/AtomicFile.h"
#include "tests/platform/posix/FileUserDefaultsFixture.h"
#include "tests/platform/posix/ForkedProcess.h"

namespace tavrel {
namespace {

using namespace std::chrono_literals;

constexpr int writesEach = 40;

/// Long enough to be written and read in several pieces.
std::string longText(char letter) {
    return std::string(50'000, letter);
}

bool isWhole(const std::string& text) {
    return text.size() == 50'000 && text.find_first_not_of(text.front()) == std::string::npos;
}

/// A store that waits for the lock however long writers that never pause keep it from it.
class PatientStore : public FileUserDefaults {
public:
    explicit PatientStore(const std::filesystem::path& path)
        : FileUserDefaults(path, std::chrono::system_clock::now, std::chrono::minutes(5)) {}
};

/// Several writers and readers of one file. A child process reports failure by its result.
class SharedDefaultsTest : public FileUserDefaultsTest {
protected:
    /// Counts up under a key of its own. Returns whether no one else changed the value.
    bool countUp(const std::string& key) {
        PatientStore ownStore(path);
        for (int i = 1; i <= writesEach; ++i) {
            if (!ownStore.setData(key, std::to_string(i)) ||
                ownStore.data(key) != std::to_string(i)) {
                return false;
            }
        }
        return true;
    }

    /// Writes long texts under a key shared with others. Returns whether each text read was
    /// whole.
    bool writeLongTexts(const std::string& key, char letter) {
        PatientStore ownStore(path);
        for (int i = 0; i < writesEach; ++i) {
            if (!ownStore.setData(key, longText(letter)) ||
                !isWhole(ownStore.data(key).value_or(""))) {
                return false;
            }
        }
        return true;
    }
};

TEST_F(SharedDefaultsTest, TwoProcessesWritingDifferentKeysLoseNone) {
    ForkedProcess first([&] { return countUp("first") ? 0 : 1; });
    ForkedProcess second([&] { return countUp("second") ? 0 : 1; });

    EXPECT_TRUE(countUp("third"));
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
    for (const std::string key : {"first", "second", "third"}) {
        EXPECT_EQ(store.data(key), std::to_string(writesEach)) << key;
    }
}

TEST_F(SharedDefaultsTest, TwoProcessesChangingOneValueLoseNoChange) {
    const auto add = [&] {
        PatientStore ownStore(path);
        const auto addOne = [](const std::optional<std::string>& old) {
            return std::to_string(std::stoi(old.value_or("0")) + 1);
        };
        for (int i = 0; i < writesEach; ++i) {
            if (!ownStore.update("sum", addOne)) {
                return 1;
            }
        }
        return 0;
    };

    ForkedProcess first(add);
    ForkedProcess second(add);

    EXPECT_EQ(add(), 0);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_EQ(store.data("sum"), std::to_string(3 * writesEach));
}

TEST_F(SharedDefaultsTest, LockThatAnotherNeverFreesRefusesAfterTheTimeLimit) {
    FileUserDefaults impatient(path, std::chrono::system_clock::now, 20ms);
    store.setData("key", "old");
    {
        const auto held = AtomicFile::lock(beside(".lock"), 1s);
        ASSERT_TRUE(held.isOpen());

        EXPECT_FALSE(impatient.setData("key", "new"));
    }
    EXPECT_EQ(store.data("key"), "old");
    EXPECT_TRUE(impatient.setData("key", "new"));
    EXPECT_EQ(store.data("key"), "new");
}

TEST_F(SharedDefaultsTest, ThreadsOfOneStoreWritingDifferentKeysLoseNone) {
    constexpr int threadCount = 4;
    PatientStore shared(path);
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&shared, key = "key " + std::to_string(t)] {
            for (int i = 1; i <= writesEach; ++i) {
                EXPECT_TRUE(shared.setData(key, std::to_string(i)));
                EXPECT_EQ(shared.data(key), std::to_string(i));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (int t = 0; t < threadCount; ++t) {
        EXPECT_EQ(store.data("key " + std::to_string(t)), std::to_string(writesEach));
    }
}

TEST_F(SharedDefaultsTest, ProcessesAndThreadsWritingOneKeyNeverTearIt) {
    ForkedProcess child([&] { return writeLongTexts("shared", 'c') ? 0 : 1; });
    std::thread thread([&] { EXPECT_TRUE(writeLongTexts("shared", 't')); });

    EXPECT_TRUE(writeLongTexts("shared", 'm'));
    thread.join();
    EXPECT_EQ(child.wait(), 0);
    EXPECT_TRUE(isWhole(store.data("shared").value_or("")));
}

TEST_F(SharedDefaultsTest, KilledWriterLeavesAWholeValueAndNoLock) {
    store.setData("other", "untouched");
    for (int round = 0; round < 10; ++round) {
        store.setData("key", longText('0'));
        ForkedProcess writer([&] {
            PatientStore ownStore(path);
            for (char letter = 'a';; letter = letter == 'z' ? 'a' : static_cast<char>(letter + 1)) {
                ownStore.setData("key", longText(letter));
            }
            return 0;
        });

        // Killed after one change more in each round.
        std::string last = longText('0');
        for (int seen = 0; seen <= round;) {
            const std::string now = store.data("key").value_or("");
            ASSERT_TRUE(isWhole(now));
            seen += now == last ? 0 : 1;
            last = now;
        }
        writer.kill();

        EXPECT_TRUE(isWhole(store.data("key").value_or("")));
        EXPECT_EQ(store.data("other"), "untouched");
    }

    EXPECT_TRUE(store.setData("key", "again"));
    EXPECT_EQ(names(), fileAndLock);
}

}  // namespace
}  // namespace tavrel
