#include "platform/StoredFirst.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel {
namespace {

using testing::ElementsAre;

class StoredFirstTest : public testing::Test {
protected:
    class Store : public SimulatedUserDefaults {
    public:
        explicit Store(std::vector<std::string>& log) : log_(log) {}
        void settle() override { log_.emplace_back("settled"); }

    private:
        std::vector<std::string>& log_;
    };

    class Switch : public DisplaySwitch {
    public:
        explicit Switch(std::vector<std::string>& log) : log_(log) {}
        bool canSwitch() override { return true; }
        ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
            log_.push_back(std::to_string(display) + (enabled ? " on" : " off"));
            return serverStatus::cannotComplete;
        }

    private:
        std::vector<std::string>& log_;
    };

    std::vector<std::string> log;
    Store store{log};
    Switch server{log};
    StoredFirst storedFirst{server, store};
};

TEST_F(StoredFirstTest, ADisplayGoesOffWhenTheStoreHasSettled) {
    EXPECT_EQ(storedFirst.setDisplayEnabled(5, false), 1004);

    EXPECT_THAT(log, ElementsAre("settled", "5 off"));
}

TEST_F(StoredFirstTest, ADisplayThatComesOnWaitsForNothing) {
    EXPECT_EQ(storedFirst.setDisplayEnabled(5, true), 1004);

    EXPECT_THAT(log, ElementsAre("5 on"));
}

TEST_F(StoredFirstTest, CanSwitchWhereTheInnerOneCan) {
    EXPECT_TRUE(storedFirst.canSwitch());
}

}  // namespace
}  // namespace tavrel
