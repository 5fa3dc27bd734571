// SPDX-License-Identifier: Apache-2.0
// Waiting, and how long to wait.

#include <cstdlib>
#include <ctime>
#include <limits>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "headsetmgmt/utilities.h"

#include "support/virtual_time.h"

using headsetmgmt::test_support::VirtualTime;
using testing::ElementsAre;

namespace {

TEST(TimingTest, SecondsAreSleptAsMicroseconds) {
    const VirtualTime clock(1000, VirtualTime::Sleepers::move_the_clock);

    sleep_for(1);
    sleep_for(60);

    EXPECT_THAT(clock.sleeps(), ElementsAre(1000000U, 60000000U));
    EXPECT_EQ(clock.now(), 1061);
}

TEST(TimingTest, SleepingForNoSecondReturnsAtOnce) {
    const VirtualTime clock(1000, VirtualTime::Sleepers::move_the_clock);

    sleep_for(0);

    EXPECT_EQ(clock.now(), 1000);
}

TEST(TimingTest, LongestSleepThatDoesNotWrapIs4294Seconds) {
    const VirtualTime clock(1000, VirtualTime::Sleepers::move_the_clock);

    sleep_for(4294);

    EXPECT_THAT(clock.sleeps(), ElementsAre(4294000000U));
}

TEST(TimingTest, SleepOf4295SecondsWrapsAround32Bits) {
    const VirtualTime clock(1000, VirtualTime::Sleepers::move_the_clock);

    sleep_for(4295);

    EXPECT_THAT(clock.sleeps(), ElementsAre(32704U));
}

TEST(TimingTest, SleepOfTheMostSecondsWrapsAround32Bits) {
    const VirtualTime clock(1000, VirtualTime::Sleepers::move_the_clock);

    sleep_for(std::numeric_limits<unsigned int>::max());

    EXPECT_THAT(clock.sleeps(), ElementsAre(4293967296U));
}

TEST(TimingTest, WaitLiesBetweenBaseAndBasePlusSpread) {
    for (std::time_t second = 1700000000; second < 1700000500; ++second) {
        const VirtualTime clock(second);

        const unsigned int wait = get_seconds_to_wait(30, 5);

        EXPECT_GE(wait, 30U) << second;
        EXPECT_LE(wait, 35U) << second;
    }
}

TEST(TimingTest, EverySecondOfTheSpreadIsDrawnSomeTime) {
    std::set<unsigned int> drawn;
    for (std::time_t second = 1700000000; second < 1700000500; ++second) {
        const VirtualTime clock(second);
        drawn.insert(get_seconds_to_wait(30, 5));
    }

    EXPECT_THAT(drawn, ElementsAre(30U, 31U, 32U, 33U, 34U, 35U));
}

TEST(TimingTest, WaitWithoutSpreadIsTheBase) {
    for (std::time_t second = 1700000000; second < 1700000050; ++second) {
        const VirtualTime clock(second);

        EXPECT_EQ(get_seconds_to_wait(7, 0), 7U);
        EXPECT_EQ(get_seconds_to_wait(0, 0), 0U);
        EXPECT_EQ(get_seconds_to_wait(4294967295U, 0), 4294967295U);
    }
}

TEST(TimingTest, SameSecondGivesTheSameWait) {
    const VirtualTime clock(1700000000);

    const unsigned int first = get_seconds_to_wait(10, 1000000);
    const unsigned int second = get_seconds_to_wait(10, 1000000);

    EXPECT_EQ(first, second);
}

TEST(TimingTest, AnotherSecondGivesAnotherWait) {
    VirtualTime clock(1700000000);

    const unsigned int first = get_seconds_to_wait(10, 1000000);
    clock.advance(1U);
    const unsigned int second = get_seconds_to_wait(10, 1000000);

    EXPECT_NE(first, second);
}

TEST(TimingTest, WaitIsTheFirstDrawOfAGeneratorThatIsSeededWithTheTime) {
    const VirtualTime clock(1700000000);
    std::srand(1700000000U);
    const auto first_draw = static_cast<unsigned int>(std::rand());
    const int second_draw = std::rand();

    EXPECT_EQ(get_seconds_to_wait(30, 999999), 30U + first_draw % 1000000U);

    EXPECT_EQ(std::rand(), second_draw) << "one draw, no more";
}

TEST(TimingTest, WaitPastTheLastValueWrapsAround32Bits) {
    const VirtualTime clock(1700000000);

    const unsigned int wait = get_seconds_to_wait(4294967295U, 1000000);

    EXPECT_EQ(wait, get_seconds_to_wait(0, 1000000) - 1U);
}

TEST(TimingTest, WidestSpreadIsAnsweredWithoutDividingByZero) {
    const VirtualTime clock(1700000000);

    const unsigned int wait = get_seconds_to_wait(0, std::numeric_limits<unsigned int>::max());

    EXPECT_LE(wait, 2147483647U);
}

}  // namespace
