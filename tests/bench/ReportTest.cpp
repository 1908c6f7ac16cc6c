#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>

#include "tests/bench/Report.h"

namespace tavrel::bench {
namespace {

using testing::HasSubstr;
using testing::Not;

class ReportTest : public testing::Test {
protected:
    std::string rowOf(const Comparison& row) {
        out.str("");
        report.add(row);
        return out.str();
    }

    std::ostringstream out;
    Report report{out};
};

TEST(MedianTest, IsTheMiddleOneOrTheMeanOfTheMiddleTwo) {
    EXPECT_EQ(median({9, 1, 5}), 5);
    EXPECT_EQ(median({9, 1, 5, 7}), 6);
    EXPECT_TRUE(std::isnan(median({})));
}

TEST_F(ReportTest, TheRatioIsTheMedianOfTheRunsRatiosAndNotOfTheMedians) {
    // The machine was ten times slower in the second run, for both.
    const std::string row = rowOf({"a start", "ms", {10, 200, 30}, "the other", {10, 100, 60}});

    EXPECT_THAT(row, HasSubstr("| 30.0 ms | the other | 60.0 ms | 1.00 × |"));
}

TEST_F(ReportTest, AGoalIsMetUpToItsLimit) {
    const Comparison row{"a start", "ms", {8}, "the other", {10}, {Goal::Of::ratio, 0.8}};
    Comparison slower = row;
    slower.ours = {8.1};

    EXPECT_THAT(rowOf(row), HasSubstr("| ≤ 0.8 × | met |"));
    EXPECT_THAT(rowOf(slower), HasSubstr("| ≤ 0.8 × | **not met** |"));
    EXPECT_EQ(report.goalsMet(), 1);
    EXPECT_EQ(report.goalsMissed(), 1);
}

TEST_F(ReportTest, AnExcessIsTakenRunByRun) {
    // In the medians it would be 9 more.
    EXPECT_THAT(rowOf({"a click", "ms", {2, 10, 12}, "bare", {1, 9, 0}, {Goal::Of::excess, 2}}),
                HasSubstr("| ≤ 2 ms more | met |"));
}

TEST_F(ReportTest, WithoutAGoalThereIsNoVerdict) {
    EXPECT_THAT(rowOf({.what = "memory", .unit = "MiB", .ours = {3}}), Not(HasSubstr("met")));
}

TEST_F(ReportTest, IsNotWholeOnceSomethingCouldNotBeMeasured) {
    report.addMissing("a start", "nobody is there to compare with");
    EXPECT_TRUE(report.isWhole());

    report.addFailure("a start", "no window\nopens | at all");

    EXPECT_FALSE(report.isWhole());
    EXPECT_THAT(out.str(), HasSubstr("no window opens / at all"));
}

TEST_F(ReportTest, ARowOfNoRunIsAFailure) {
    rowOf({.what = "a start", .unit = "ms"});

    EXPECT_FALSE(report.isWhole());
}

}  // namespace
}  // namespace tavrel::bench
