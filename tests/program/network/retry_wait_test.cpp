// SPDX-License-Identifier: Apache-2.0
// Tests of the waits between a phone's attempts: drawn, never waited for.

#include <algorithm>
#include <chrono>

#include <gtest/gtest.h>

#include "program/network/retry_wait.h"

namespace headsetmgmt::program {
namespace {

struct Range {
    long shortest;
    long longest;
};

/// The shortest and the longest of many waits before an attempt, in milliseconds.
Range drawn_before(int attempt) {
    std::mt19937 random(4711);
    Range range = {wait_before(attempt, random).count(), 0};
    for (int i = 0; i < 2000; ++i) {
        const long wait = wait_before(attempt, random).count();
        range = {std::min(range.shortest, wait), std::max(range.longest, wait)};
    }
    return range;
}

void expect_within(const Range& range, long shortest, long longest) {
    EXPECT_GE(range.shortest, shortest);
    EXPECT_LE(range.longest, longest);
    // Spread over the whole of it.
    const long a_tenth = (longest - shortest) / 10;
    EXPECT_LE(range.shortest, shortest + a_tenth);
    EXPECT_GE(range.longest, longest - a_tenth);
}

TEST(RetryWait, BeforeTheSecondAttemptIsOneSecondLessUpToAQuarter) {
    expect_within(drawn_before(2), 750, 1000);
}

TEST(RetryWait, DoublesWithEachAttempt) {
    expect_within(drawn_before(3), 1500, 2000);
    expect_within(drawn_before(4), 3000, 4000);
    expect_within(drawn_before(7), 24000, 32000);
}

TEST(RetryWait, NeverExceedsAMinute) {
    expect_within(drawn_before(8), 45000, 60000);
    expect_within(drawn_before(1000000), 45000, 60000);
}

}  // namespace
}  // namespace headsetmgmt::program
