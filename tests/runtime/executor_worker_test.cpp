// SPDX-License-Identifier: Apache-2.0
// The executor with its worker thread: tasks that come from other threads, and its end.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "runtime/executor_impl.h"
#include "support/event.h"
#include "support/recording_log.h"
#include "support/virtual_time.h"
#include "support/watched_task.h"

namespace headsetmgmt {
namespace {

using test_support::add_plain;
using test_support::add_watched;
using test_support::Event;
using test_support::LogLine;
using test_support::RecordingLog;
using test_support::RunRecord;
using test_support::VirtualTime;
using test_support::Watched;
using test_support::Work;
using namespace std::chrono_literals;

using Names = std::vector<std::string>;

/// An executor with a worker that sleeps until the test moves the clock.
struct ExecutorWorkerTest : testing::Test {
    VirtualTime time{1000};
    RecordingLog log;
    RunRecord record;
    std::deque<Watched> watched_tasks;  // they outlive what the executor still has queued
    ExecutorImpl executor{&log};

    Watched& watch() { return watched_tasks.emplace_back(); }

    void SetUp() override { ASSERT_TRUE(executor.run("worker", 0, 0)); }
    void TearDown() override { stop(); }

    /// Asks the worker to leave and waits for its end; false when it has ended already.
    bool stop() {
        executor.requestExit();
        time.release();
        return executor.join();
    }
};

TEST_F(ExecutorWorkerTest, AddedTaskRunsWhenTheWorkerHasSleptFiftyMilliseconds) {
    time.wait_until_parked();
    Work work = Work::named("task", record);
    add_plain(executor, work);

    time.advance_and_settle(49999us);
    EXPECT_EQ(record.ran(), Names());
    time.advance_and_settle(1us);

    EXPECT_EQ(record.ran(), Names({"task"}));
}

TEST_F(ExecutorWorkerTest, TaskRunsOnTheWorker) {
    time.wait_until_parked();
    std::thread::id runner;
    Work work{[&] { runner = std::this_thread::get_id(); }};
    add_plain(executor, work);

    time.advance_and_settle(50ms);

    EXPECT_NE(runner, std::thread::id());
    EXPECT_NE(runner, std::this_thread::get_id());
}

TEST_F(ExecutorWorkerTest, IdleWorkerLogsNothing) {
    time.wait_until_parked();
    log.take();

    time.advance_and_settle(50ms);
    time.advance_and_settle(50ms);

    EXPECT_EQ(log.take(), std::vector<LogLine>());
    EXPECT_EQ(time.sleeps().size(), 3U);
}

TEST_F(ExecutorWorkerTest, DeferredTaskWaitsThirtySecondsWhileLaterOnesRun) {
    time.wait_until_parked();
    Work deferred = Work::named("deferred", record);
    Work later = Work::named("later", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    add_watched(executor, deferred, watched);
    add_plain(executor, later);

    time.advance_and_settle(29s);
    EXPECT_EQ(record.ran(), Names({"later"}));
    time.advance_and_settle(1s);

    EXPECT_EQ(record.ran(), Names({"later", "deferred"}));
}

TEST_F(ExecutorWorkerTest, LinesOfAnAddedTaskComeBeforeTheWorkerCanTakeIt) {
    time.wait_until_parked();
    Work work = Work::named("task", record);
    const auto producer = std::this_thread::get_id();
    int passes = 0;
    log.hook = [&](const LogLine&) {
        if (std::this_thread::get_id() == producer) {
            time.advance_and_settle(50ms);  // the worker makes a pass
            ++passes;
            EXPECT_EQ(record.ran(), Names());
        }
    };

    add_plain(executor, work);

    EXPECT_EQ(passes, 2);
    log.hook = nullptr;
    time.advance_and_settle(50ms);
    EXPECT_EQ(record.ran(), Names({"task"}));
}

TEST_F(ExecutorWorkerTest, TasksOfSeveralThreadsAllRunEachThreadsInItsOrder) {
    constexpr int producers = 4;
    constexpr int tasks_each = 50;
    std::vector<std::vector<int>> ran(producers);
    std::vector<Work> works;
    for (int producer = 0; producer < producers; ++producer) {
        for (int task = 0; task < tasks_each; ++task) {
            works.push_back({[&ran, producer, task] {
                ran[static_cast<std::size_t>(producer)].push_back(task);
            }});
        }
    }
    std::vector<std::thread> threads;
    for (int producer = 0; producer < producers; ++producer) {
        threads.emplace_back([this, &works, producer] {
            for (int task = 0; task < tasks_each; ++task) {
                add_plain(executor, works[static_cast<std::size_t>(producer * tasks_each + task)]);
            }
        });
    }

    for (std::thread& thread : threads) {
        thread.join();
    }
    time.advance_and_settle(50ms);

    std::vector<int> in_order;
    for (int task = 0; task < tasks_each; ++task) {
        in_order.push_back(task);
    }
    EXPECT_EQ(ran, std::vector<std::vector<int>>(producers, in_order));
}

TEST_F(ExecutorWorkerTest, WorkerThatIsAskedToLeaveEndsAfterTheTaskItIsIn) {
    time.wait_until_parked();
    Event inside;
    Event leave;
    Work first{[&] {
        inside.happen();
        EXPECT_TRUE(leave.wait());
        record.add("first");
    }};
    Work other = Work::named("other", record);
    add_plain(executor, first);
    for (int task = 0; task < 100; ++task) {
        add_plain(executor, other);
    }
    time.advance(50ms);
    ASSERT_TRUE(inside.wait());

    executor.requestExit();
    leave.happen();

    EXPECT_TRUE(stop());
    EXPECT_EQ(record.ran(), Names({"first"}));
    EXPECT_FALSE(executor.running());
}

TEST_F(ExecutorWorkerTest, TaskThatQueuesItselfForeverCannotHoldTheEndUp) {
    time.wait_until_parked();
    Event under_way;
    std::atomic<int> runs = 0;
    Work endless;
    endless.work = [&] {
        add_plain(executor, endless);
        if (++runs == 10) {
            under_way.happen();
        }
    };
    add_plain(executor, endless);
    time.advance(50ms);
    ASSERT_TRUE(under_way.wait());

    EXPECT_TRUE(stop());

    EXPECT_FALSE(executor.running());
}

TEST_F(ExecutorWorkerTest, PassThatIsCutShortStillLogsItsEnd) {
    time.wait_until_parked();
    Event inside;
    Work leaving{[&] {
        executor.requestExit();
        inside.happen();
    }};
    add_plain(executor, leaving);
    log.take();
    time.advance(50ms);
    ASSERT_TRUE(inside.wait());

    EXPECT_TRUE(stop());

    EXPECT_EQ(log.texts(), Names({"ExecutorImpl::threadLoop, start executing task\n",
                                  "ExecutorImpl::threadLoop, complete executing task\n",
                                  "ExecutorImpl::threadLoop exiting.\n"}));
}

}  // namespace
}  // namespace headsetmgmt
