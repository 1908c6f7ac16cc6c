#include "platform/layout/Arrangement.h"

#include <algorithm>
#include <random>

#include "tests/platform/layout/Desk.h"

namespace tavrel::layout {

void PrintTo(const Standing& standing, std::ostream* out) {
    *out << standing.display << " at ";
    PrintTo(standing.area, out);
}

namespace {

using testing::UnorderedElementsAre;

Standing fullHdAt(DisplayID display, int x, int y) {
    return {display, {x, y, 1920, 1080}};
}

TEST(TouchTest, IsHavingPartOfAnEdgeInCommon) {
    const Area area{0, 0, 100, 100};

    EXPECT_TRUE(touch(area, {100, 99, 100, 100}));
    EXPECT_TRUE(touch({99, 100, 10, 10}, area));
    EXPECT_FALSE(touch(area, {100, 100, 100, 100})) << "a corner";
    EXPECT_FALSE(touch(area, {101, 0, 100, 100})) << "a gap";
    EXPECT_FALSE(touch(area, {50, 50, 100, 100})) << "an overlap";
}

TEST(WithoutGapsTest, ARowClosesUp) {
    EXPECT_THAT(withoutGaps({fullHdAt(monitorA, 0, 0), fullHdAt(monitorC, 3840, 0)}),
                UnorderedElementsAre(fullHdAt(monitorA, 0, 0), fullHdAt(monitorC, 1920, 0)));
}

TEST(WithoutGapsTest, TheFirstBeginsAtTheOrigin) {
    EXPECT_THAT(withoutGaps({fullHdAt(monitorB, 1920, 40)}),
                UnorderedElementsAre(fullHdAt(monitorB, 0, 0)));
    EXPECT_THAT(withoutGaps({fullHdAt(monitorA, -1920, 0), fullHdAt(monitorB, 0, -40)}),
                UnorderedElementsAre(fullHdAt(monitorA, 0, 40), fullHdAt(monitorB, 1920, 0)));
}

TEST(WithoutGapsTest, WhatHasNoneStaysAsItIs) {
    const Arrangement corner{fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 0, 1080),
                             fullHdAt(monitorC, 1920, 1080)};

    EXPECT_THAT(withoutGaps(corner), testing::UnorderedElementsAreArray(corner));
}

TEST(WithoutGapsTest, TwoThatHangTogetherMoveTogether) {
    EXPECT_THAT(withoutGaps({fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 4000, 0),
                             fullHdAt(monitorC, 4000, 1080)}),
                UnorderedElementsAre(fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 1920, 0),
                                     fullHdAt(monitorC, 1920, 1080)));
}

TEST(WithoutGapsTest, WhatMeetsAtACornerOnlyComesBeside) {
    EXPECT_THAT(withoutGaps({fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 1920, 1080)}),
                UnorderedElementsAre(fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 1920, 0)));
}

TEST(WithoutGapsTest, MirrorsStayMirrors) {
    EXPECT_THAT(withoutGaps({fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 2000, 0),
                             fullHdAt(monitorC, 2000, 0)}),
                UnorderedElementsAre(fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 1920, 0),
                                     fullHdAt(monitorC, 1920, 0)));
}

TEST(WithoutGapsTest, NothingComesToLieOnAnother) {
    // C is nearer to A than B is, but B stands between them.
    EXPECT_THAT(
        withoutGaps({fullHdAt(monitorA, 0, 0),
                     {monitorB, {1930, 0, 100, 100}},
                     {monitorC, {2100, 0, 100, 100}}}),
        UnorderedElementsAre(fullHdAt(monitorA, 0, 0), Standing{monitorB, {1920, 0, 100, 100}},
                             Standing{monitorC, {2020, 0, 100, 100}}));
}

bool hangsTogether(const Arrangement& arrangement) {
    std::vector<bool> isReached(arrangement.size());
    isReached.at(0) = true;
    for (std::size_t round = 0; round < arrangement.size(); ++round) {
        for (std::size_t i = 0; i < arrangement.size(); ++i) {
            for (std::size_t j = 0; j < arrangement.size(); ++j) {
                isReached[j] = isReached[j] ||
                               (isReached[i] && touch(arrangement[i].area, arrangement[j].area));
            }
        }
    }
    return std::all_of(isReached.begin(), isReached.end(), [](bool each) { return each; });
}

bool hasOverlap(const Arrangement& arrangement) {
    for (std::size_t i = 0; i < arrangement.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (overlap(arrangement[i].area, arrangement[j].area)) {
                return true;
            }
        }
    }
    return false;
}

TEST(WithoutGapsTest, WhateverItIsGivenItHangsTogetherAndNothingOverlaps) {
    std::mt19937 random(2);
    const auto below = [&](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    for (int round = 0; round < 500; ++round) {
        Arrangement arrangement;
        for (DisplayID display = 1; display <= 5; ++display) {
            const Arrangement before = arrangement;
            arrangement.push_back({display, {below(30), below(30), 1 + below(9), 1 + below(9)}});
            arrangement = hasOverlap(arrangement) ? before : arrangement;
        }

        const Arrangement closed = withoutGaps(arrangement);

        ASSERT_EQ(closed.size(), arrangement.size());
        ASSERT_TRUE(hangsTogether(closed)) << testing::PrintToString(arrangement);
        ASSERT_FALSE(hasOverlap(closed)) << testing::PrintToString(arrangement);
        ASSERT_THAT(withoutGaps(closed), testing::UnorderedElementsAreArray(closed));
    }
}

}  // namespace
}  // namespace tavrel::layout
