// SPDX-License-Identifier: Apache-2.0
// What tests rely on when they own the clock.

#include <chrono>
#include <ctime>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "support/event.h"
#include "support/virtual_time.h"

extern "C" std::time_t library_time();
extern "C" void library_sleep(useconds_t duration);

using headsetmgmt::test_support::Event;
using headsetmgmt::test_support::VirtualTime;
using namespace std::chrono_literals;

namespace {

constexpr std::time_t some_second = 1000;

TEST(VirtualTimeTest, ClockIsRealWithoutIt) {
    const auto before = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    const std::time_t answered = std::time(nullptr);

    EXPECT_GE(answered, before);
    EXPECT_LE(answered, before + 60);
}

TEST(VirtualTimeTest, SleepIsRealWithoutIt) {
    const auto before = std::chrono::steady_clock::now();

    EXPECT_EQ(usleep(2000), 0);

    EXPECT_GE(std::chrono::steady_clock::now() - before, 1ms);
}

TEST(VirtualTimeTest, TimeStandsUntilItIsMoved) {
    VirtualTime time(some_second);
    time.advance(999ms);
    EXPECT_EQ(std::time(nullptr), 1000);

    time.advance(1ms);

    std::time_t stored = 0;
    EXPECT_EQ(std::time(&stored), 1001);
    EXPECT_EQ(stored, 1001);
}

TEST(VirtualTimeTest, SleeperWaitsForTheLastMicrosecond) {
    VirtualTime time(some_second);
    Event woke;
    std::thread sleeper([&] {
        usleep(50000);
        woke.happen();
        usleep(1);
    });
    time.wait_until_parked();

    time.advance(49999us);
    EXPECT_EQ(time.sleeps(), std::vector<useconds_t>({50000}));
    time.advance_and_settle(1us);

    EXPECT_TRUE(woke.wait());
    EXPECT_EQ(time.take_sleeps(), std::vector<useconds_t>({50000, 1}));
    time.release();
    sleeper.join();
}

TEST(VirtualTimeTest, SettlingWaitsForEveryWokenSleeper) {
    VirtualTime time(some_second);
    std::vector<int> rounds(2);
    const auto sleep_twice = [](int& round) {
        for (round = 0; round < 2; ++round) {
            usleep(1000);
        }
    };
    std::thread first(sleep_twice, std::ref(rounds[0]));
    std::thread second(sleep_twice, std::ref(rounds[1]));
    time.wait_until_parked(2);

    time.advance_and_settle(1ms);

    EXPECT_EQ(rounds, std::vector<int>({1, 1}));
    time.release();
    first.join();
    second.join();
}

TEST(VirtualTimeTest, SleepsMoveTheClockIfChosen) {
    VirtualTime time(some_second, VirtualTime::Sleepers::move_the_clock);

    usleep(2500000);

    EXPECT_EQ(std::time(nullptr), 1002);
    EXPECT_EQ(time.sleeps(), std::vector<useconds_t>({2500000}));
}

TEST(VirtualTimeTest, SleeperGoesOnWhenTheClockIsRealAgain) {
    std::thread sleeper;
    {
        VirtualTime time(some_second);
        sleeper = std::thread([] { usleep(4000000000U); });
        time.wait_until_parked();
    }

    sleeper.join();
}

TEST(VirtualTimeTest, SharedLibrariesHaveTheSameClock) {
    VirtualTime time(some_second, VirtualTime::Sleepers::move_the_clock);

    library_sleep(3000000);

    EXPECT_EQ(library_time(), 1003);
}

TEST(VirtualTimeTest, ThereIsOneAtATime) {
    VirtualTime time(some_second);

    EXPECT_THROW(VirtualTime second(some_second), std::logic_error);
    EXPECT_EQ(std::time(nullptr), 1000);
}

}  // namespace
