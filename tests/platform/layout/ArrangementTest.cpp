#include "platform/layout/Arrangement.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <random>
#include <utility>

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
    for (const Area& beside : {Area{100, 99, 5, 5}, Area{99, 100, 5, 5}, Area{100, -4, 5, 5},
                               Area{-4, 100, 5, 5}, Area{-5, 99, 5, 5}, Area{99, -5, 5, 5}}) {
        EXPECT_TRUE(touch(area, beside)) << testing::PrintToString(beside);
        EXPECT_TRUE(touch(beside, area)) << testing::PrintToString(beside);
    }
    for (const Area& apart :
         {Area{100, 100, 5, 5}, Area{-5, 100, 5, 5}, Area{100, -5, 5, 5}, Area{-5, -5, 5, 5},
          Area{101, 50, 5, 5}, Area{50, 101, 5, 5}, Area{-6, 50, 5, 5}, Area{50, -6, 5, 5}}) {
        EXPECT_FALSE(touch(area, apart)) << testing::PrintToString(apart);
        EXPECT_FALSE(touch(apart, area)) << testing::PrintToString(apart);
    }
}

TEST(WithoutGapsTest, ARowClosesUp) {
    EXPECT_THAT(withoutGaps({fullHdAt(monitorA, 0, 0), fullHdAt(monitorC, 3840, 0)}),
                UnorderedElementsAre(fullHdAt(monitorA, 0, 0), fullHdAt(monitorC, 1920, 0)));
}

TEST(WithoutGapsTest, SoDoesAColumn) {
    EXPECT_THAT(withoutGaps({fullHdAt(monitorA, 0, 0), fullHdAt(monitorC, 0, 2160)}),
                UnorderedElementsAre(fullHdAt(monitorA, 0, 0), fullHdAt(monitorC, 0, 1080)));
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

TEST(WithoutGapsTest, WhoeverIsNearestToTheOriginStaysWhateverTheOrderInTheList) {
    Arrangement corner{fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 2000, 0),
                       fullHdAt(monitorC, 0, 2000)};
    const auto byDisplay = [](const Standing& a, const Standing& b) {
        return a.display < b.display;
    };

    do {
        EXPECT_THAT(withoutGaps(corner),
                    UnorderedElementsAre(fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 1920, 0),
                                         fullHdAt(monitorC, 0, 1080)))
            << testing::PrintToString(corner);
    } while (std::next_permutation(corner.begin(), corner.end(), byDisplay));
}

TEST(WithoutGapsTest, OneMovesToTheRightWhereThatIsNearer) {
    const Standing above{monitorA, {0, 0, 3840, 2160}};
    const Standing belowAtTheRight = fullHdAt(monitorB, 2880, 2160);

    EXPECT_THAT(withoutGaps({above, belowAtTheRight, fullHdAt(monitorC, 900, 2260)}),
                UnorderedElementsAre(above, belowAtTheRight, fullHdAt(monitorC, 960, 2260)));
}

TEST(WithoutGapsTest, OneThatStandsWhereOthersHaveComeMakesRoom) {
    // B and D are the nearest to A, and D comes to lie on C. C is nearer to B's side than to D's
    // upper edge, but there it would still lie on D.
    constexpr DisplayID monitorD = 4;
    const Standing c{monitorC, {2000, 1080, 1280, 1024}};

    EXPECT_THAT(withoutGaps({fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 0, 2180),
                             fullHdAt(monitorD, 1920, 2180), c}),
                UnorderedElementsAre(fullHdAt(monitorA, 0, 0), fullHdAt(monitorB, 0, 1080),
                                     fullHdAt(monitorD, 1920, 1080),
                                     Standing{monitorC, {2000, 1080 - 1024, 1280, 1024}}));
}

Standing transposed(const Standing& each) {
    return {each.display, {each.area.y, each.area.x, each.area.height, each.area.width}};
}

/// How far B has moved, as seen from A.
int distanceMoved(const Arrangement& before, const Arrangement& after) {
    const auto place = [](const Arrangement& arrangement, DisplayID display) {
        return std::find_if(arrangement.begin(), arrangement.end(),
                            [&](const Standing& each) { return each.display == display; })
            ->area;
    };
    const auto offset = [&](const Arrangement& arrangement) {
        const Area one = place(arrangement, monitorA);
        const Area other = place(arrangement, monitorB);
        return std::pair(other.x - one.x, other.y - one.y);
    };
    return std::abs(offset(after).first - offset(before).first) +
           std::abs(offset(after).second - offset(before).second);
}

/// By trying all that are not too long. What must also move along the edge it comes to stops where
/// two corners meet.
int shortestMove(const Area& fixed, const Area& area) {
    int shortest = std::numeric_limits<int>::max();
    for (int x = -40; x <= 40; ++x) {
        for (int y = -40; y <= 40; ++y) {
            const Area moved{area.x + x, area.y + y, area.width, area.height};
            const bool isBeside = moved.right() == fixed.x || fixed.right() == moved.x;
            const bool isLevel = y == 0 || moved.y == fixed.y || moved.bottom() == fixed.bottom();
            const bool isInLine = x == 0 || moved.x == fixed.x || moved.right() == fixed.right();
            if (touch(fixed, moved) && !overlap(fixed, moved) && (isBeside ? isLevel : isInLine)) {
                shortest = std::min(shortest, std::abs(x) + std::abs(y));
            }
        }
    }
    return shortest;
}

TEST(WithoutGapsTest, NothingMovesFurtherThanItMust) {
    const Area fixed{12, 12, 6, 4};
    for (int x = 0; x < 30; x += 3) {
        for (int y = 0; y < 30; ++y) {
            const Area area{x, y, 3, 5};
            if (overlap(fixed, area)) {
                continue;
            }
            const Arrangement before{{monitorA, fixed}, {monitorB, area}};
            const Arrangement mirrored{transposed(before[0]), transposed(before[1])};

            const int shortest = shortestMove(fixed, area);

            EXPECT_EQ(distanceMoved(before, withoutGaps(before)), shortest) << x << ' ' << y;
            EXPECT_EQ(distanceMoved(mirrored, withoutGaps(mirrored)), shortest) << x << ' ' << y;
        }
    }
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

/// The least x and the least y.
std::pair<int, int> upperLeftOf(const Arrangement& arrangement) {
    std::pair<int, int> least{std::numeric_limits<int>::max(), std::numeric_limits<int>::max()};
    for (const Standing& each : arrangement) {
        least = {std::min(least.first, each.area.x), std::min(least.second, each.area.y)};
    }
    return least;
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
        ASSERT_EQ(upperLeftOf(closed).first, 0);
        ASSERT_EQ(upperLeftOf(closed).second, 0);
        ASSERT_TRUE(hangsTogether(closed)) << testing::PrintToString(arrangement);
        ASSERT_FALSE(hasOverlap(closed)) << testing::PrintToString(arrangement);
        ASSERT_THAT(withoutGaps(closed), testing::UnorderedElementsAreArray(closed));
    }
}

}  // namespace
}  // namespace tavrel::layout
