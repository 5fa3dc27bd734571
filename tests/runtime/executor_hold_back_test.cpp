// SPDX-License-Identifier: Apache-2.0
// Tasks that are not run at once: deferred, not ready, timed out or dropped.

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "runtime/executor_bench.h"

namespace headsetmgmt {
namespace {

using test_support::add_plain;
using test_support::add_watched;
using test_support::debug_lines;
using test_support::ExecutorBench;
using test_support::LogLine;
using test_support::Names;
using test_support::Watched;
using test_support::Work;
using namespace std::chrono_literals;

using ExecutorHoldBackTest = ExecutorBench;

TEST_F(ExecutorHoldBackTest, DeferredTaskRunsWhenThirtySecondsHavePassed) {
    Work work = Work::named("deferred", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    add_watched(executor, work, watched);

    for (int second = 0; second < 30; ++second) {
        pass_second();
    }
    EXPECT_EQ(record.ran(), Names());
    EXPECT_EQ(watched.checks, 0);
    pass_second();

    EXPECT_EQ(record.ran(), Names({"deferred"}));
    EXPECT_EQ(watched.checks, 1);
}

TEST_F(ExecutorHoldBackTest, DeferralBeginsWhenItsLineHasBeenDelivered) {
    Work work = Work::named("deferred", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    log.hook = [this](const test_support::LogLine& line) {
        if (line.text == "ExecutorImpl: add deferred task.\n") {
            time.advance(std::chrono::seconds(20));
        }
    };
    add_watched(executor, work, watched);

    for (int second = 0; second < 30; ++second) {
        pass_second();
    }
    EXPECT_EQ(record.ran(), Names());
    pass_second();

    EXPECT_EQ(record.ran(), Names({"deferred"}));
}

TEST_F(ExecutorHoldBackTest, HeldBackTaskLetsLaterTasksRun) {
    Work deferred = Work::named("deferred", record);
    Work second = Work::named("second", record);
    Work third = Work::named("third", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    add_watched(executor, deferred, watched);
    add_plain(executor, second);
    add_plain(executor, third);
    log.take();

    executor.threadLoop();

    EXPECT_EQ(record.ran(), Names({"second", "third"}));
    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop exiting.\n"}));
}

TEST_F(ExecutorHoldBackTest, HeldBackTaskRotatesToTheBack) {
    Work first = Work::named("first", record);
    Work second = Work::named("second", record);
    Work plain = Work::named("plain", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    add_watched(executor, first, watched);
    add_plain(executor, plain);
    add_watched(executor, second, watched);

    executor.threadLoop();
    time.advance(30s);
    executor.threadLoop();

    EXPECT_EQ(record.ran(), Names({"plain", "second", "first"}));
}

TEST_F(ExecutorHoldBackTest, PassWithOnlyHeldBackTasksLogsNothing) {
    Work work = Work::named("deferred", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    add_watched(executor, work, watched);
    add_watched(executor, work, watched);
    log.take();

    executor.threadLoop();

    EXPECT_EQ(log.take(), std::vector<LogLine>());
}

TEST_F(ExecutorHoldBackTest, TaskThatIsNotReadyIsAskedAfterEachDeferralAndRunsAtItsTimeout) {
    Work work = Work::named("unready", record);
    Watched& watched = watch();
    watched.timeout = 60;
    watched.status = [&] {
        watched.defer_time = 10;  // only from the first question on, so it is asked at once
        return TaskParametersInterface::not_ready;
    };
    add_watched(executor, work, watched);
    log.take();

    for (int second = 0; second < 60; ++second) {
        pass_second();
    }
    EXPECT_EQ(log.take(), std::vector<LogLine>());
    EXPECT_EQ(watched.checks, 6);
    pass_second();

    EXPECT_EQ(watched.checks, 7);
    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl: threadloop timeout reached\n",
                                       "ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop exiting.\n"}));
    EXPECT_EQ(record.ran(), Names({"unready"}));
}

TEST_F(ExecutorHoldBackTest, TaskThatIsNotReadyRunsAtOnceWithoutATimeout) {
    Work work = Work::named("unready", record);
    Watched& watched = watch();
    watched.status = [] { return TaskParametersInterface::not_ready; };
    add_watched(executor, work, watched);
    log.take();

    executor.threadLoop();

    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl: threadloop timeout reached\n",
                                       "ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop exiting.\n"}));
    EXPECT_EQ(watched.checks, 1);
}

TEST_F(ExecutorHoldBackTest, TaskThatBecomesReadyRunsAtItsNextQuestion) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    watched.timeout = 60;
    watched.status = [&] {
        watched.defer_time = 5;
        return watched.checks < 3 ? TaskParametersInterface::not_ready
                                  : TaskParametersInterface::ready;
    };
    add_watched(executor, work, watched);
    log.take();

    for (int second = 0; second < 10; ++second) {
        pass_second();
    }
    EXPECT_EQ(record.ran(), Names());
    pass_second();

    EXPECT_EQ(record.ran(), Names({"task"}));
    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop exiting.\n"}));
}

TEST_F(ExecutorHoldBackTest, DeferralLengthIsReadWhenItIsLookedAtAgain) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    watched.timeout = 600;
    watched.status = [&] {
        watched.defer_time = 100;
        return watched.checks < 2 ? TaskParametersInterface::not_ready
                                  : TaskParametersInterface::ready;
    };
    add_watched(executor, work, watched);
    executor.threadLoop();

    watched.defer_time = 3;
    time.advance(3s);
    executor.threadLoop();

    EXPECT_EQ(record.ran(), Names({"task"}));
}

TEST_F(ExecutorHoldBackTest, TaskThatIsNotReadyWithoutADeferralIsAskedAgainInTheSamePass) {
    Work work = Work::named("unready", record);
    Work other = Work::named("other", record);
    Watched& watched = watch();
    watched.timeout = 60;
    watched.status = [&] {
        return watched.checks < 3 ? TaskParametersInterface::not_ready
                                  : TaskParametersInterface::ready;
    };
    add_watched(executor, work, watched);
    add_plain(executor, other);

    executor.threadLoop();

    EXPECT_EQ(record.ran(), Names({"other", "unready"}));
    EXPECT_EQ(time.sleeps().size(), 1U);
}

TEST_F(ExecutorHoldBackTest, DroppedTaskNeverRunsAndItsParametersAreDeleted) {
    Work dropped = Work::named("dropped", record);
    Work next = Work::named("next", record);
    Watched& watched = watch();
    watched.status = [] { return TaskParametersInterface::drop; };
    add_watched(executor, dropped, watched);
    EXPECT_EQ(watched.alive, 1);
    add_plain(executor, next);
    log.take();

    executor.threadLoop();
    executor.threadLoop();

    EXPECT_EQ(record.ran(), Names({"next"}));
    EXPECT_EQ(watched.alive, 0);
    EXPECT_EQ(watched.checks, 1);
    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl: drop task\n",
                                       "ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop exiting.\n"}));
}

TEST_F(ExecutorHoldBackTest, ParametersOfADroppedTaskAreDeletedAfterItsLine) {
    Work work = Work::named("dropped", record);
    Watched& watched = watch();
    watched.status = [] { return TaskParametersInterface::drop; };
    add_watched(executor, work, watched);
    int alive = 0;
    log.hook = [&](const LogLine& line) {
        if (line.text == "ExecutorImpl: drop task\n") {
            alive = watched.alive;
        }
    };

    executor.threadLoop();

    log.hook = nullptr;
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(watched.alive, 0);
}

TEST_F(ExecutorHoldBackTest, PassThatOnlyDropsDoesNotLogItsEnd) {
    Work work = Work::named("dropped", record);
    Watched& watched = watch();
    watched.status = [] { return TaskParametersInterface::drop; };
    add_watched(executor, work, watched);
    log.take();

    executor.threadLoop();

    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl: drop task\n"}));
}

TEST_F(ExecutorHoldBackTest, AnyOtherStatusIsReady) {
    for (const int status : {0, 4, -1}) {
        Work work = Work::named("status " + std::to_string(status), record);
        Watched& watched = watch();
        watched.timeout = 60;
        watched.status = [status] { return status; };
        add_watched(executor, work, watched);
        executor.threadLoop();
    }

    EXPECT_EQ(record.ran(), Names({"status 0", "status 4", "status -1"}));
}

}  // namespace
}  // namespace headsetmgmt
