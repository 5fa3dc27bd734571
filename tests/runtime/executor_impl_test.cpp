// SPDX-License-Identifier: Apache-2.0
// The queue of tasks: which task runs when, and what the log says of it.

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
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
using test_support::do_work;
using test_support::ExecutorBench;
using test_support::LogLine;
using test_support::Names;
using test_support::RecordingLog;
using test_support::Watched;
using test_support::WatchedParameters;
using test_support::Work;
using namespace std::chrono_literals;

using ExecutorImplTest = ExecutorBench;

TEST_F(ExecutorImplTest, ConstructionIsLogged) {
    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::ExecutorImpl: ENTER.\n"}));
}

TEST_F(ExecutorImplTest, AddingATaskIsLogged) {
    Work work = Work::named("task", record);
    log.take();

    add_plain(executor, work);

    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::add_task: ENTER.\n",
                                       "ExecutorImpl::ExecutorImpl adding a task\n"}));
    EXPECT_EQ(record.ran(), Names());
}

TEST_F(ExecutorImplTest, AddingADeferredTaskIsLogged) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    log.take();

    add_watched(executor, work, watched);

    EXPECT_EQ(log.take(),
              debug_lines({"ExecutorImpl::add_task: ENTER.\n", "ExecutorImpl: add deferred task.\n",
                           "ExecutorImpl::ExecutorImpl adding a task\n"}));
}

TEST_F(ExecutorImplTest, PassThatRunsATaskIsLogged) {
    Work work = Work::named("task", record);
    add_plain(executor, work);
    log.take();

    EXPECT_TRUE(executor.threadLoop());

    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop exiting.\n"}));
    EXPECT_EQ(record.ran(), Names({"task"}));
}

TEST_F(ExecutorImplTest, PassThatRunsSeveralTasksEndsWithOneLine) {
    Work work = Work::named("task", record);
    add_plain(executor, work);
    add_plain(executor, work);
    log.take();

    executor.threadLoop();

    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop exiting.\n"}));
}

TEST_F(ExecutorImplTest, EmptyPassLogsNothingAndSleepsFiftyMilliseconds) {
    log.take();

    EXPECT_TRUE(executor.threadLoop());

    EXPECT_EQ(log.take(), std::vector<LogLine>());
    EXPECT_EQ(time.sleeps(), std::vector<useconds_t>({50000}));
}

TEST_F(ExecutorImplTest, PassSleepsBeforeItLogsItsEnd) {
    Work work = Work::named("task", record);
    add_plain(executor, work);
    std::vector<std::size_t> sleeps_at_line;
    log.take();
    log.hook = [&](const LogLine&) { sleeps_at_line.push_back(time.sleeps().size()); };

    executor.threadLoop();

    EXPECT_EQ(sleeps_at_line, std::vector<std::size_t>({0, 0, 1}));
}

TEST_F(ExecutorImplTest, TaskGetsItsContextAndACloneOfItsParameters) {
    struct Seen {
        TaskParametersInterface* params = nullptr;
        Watched* watched = nullptr;
    } seen;
    Watched& watched = watch();
    auto params = std::make_unique<WatchedParameters>(watched);
    const TaskParametersInterface* original = params.get();

    executor.add_task(
        [](void* context, TaskParametersInterface* given) {
            auto* noted = static_cast<Seen*>(context);
            noted->params = given;
            noted->watched = &dynamic_cast<WatchedParameters&>(*given).watched;
        },
        &seen, params.get());
    executor.threadLoop();

    EXPECT_NE(seen.params, nullptr);
    EXPECT_NE(seen.params, original);
    EXPECT_EQ(seen.watched, &watched);
    EXPECT_EQ(watched.clones, 1);
}

TEST_F(ExecutorImplTest, CallerKeepsItsOwnParametersAndTheCloneGoesWithTheTask) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    WatchedParameters original(watched);
    executor.add_task(do_work, &work, &original);
    EXPECT_EQ(watched.alive, 2);

    executor.threadLoop();

    EXPECT_EQ(watched.alive, 1);
}

TEST_F(ExecutorImplTest, TaskWithoutParametersRunsAtOnceWithNullParameters) {
    bool got_null = false;

    executor.add_task(
        [](void* context, TaskParametersInterface* params) {
            *static_cast<bool*>(context) = params == nullptr;
        },
        &got_null, nullptr);
    executor.threadLoop();

    EXPECT_TRUE(got_null);
    EXPECT_EQ(time.sleeps().size(), 1U);
}

TEST_F(ExecutorImplTest, TasksRunInTheOrderInWhichTheyWereAdded) {
    Work first = Work::named("first", record);
    Work second = Work::named("second", record);
    Work third = Work::named("third", record);
    Watched& watched = watch();

    add_plain(executor, first);
    add_watched(executor, second, watched);
    add_plain(executor, third);
    executor.threadLoop();

    EXPECT_EQ(record.ran(), Names({"first", "second", "third"}));
}

TEST_F(ExecutorImplTest, TaskThatATaskAddsRunsInTheSamePass) {
    Work follow_up = Work::named("follow-up", record);
    Work first{[&] {
        record.add("first");
        add_plain(executor, follow_up);
    }};

    add_plain(executor, first);
    executor.threadLoop();

    EXPECT_EQ(record.ran(), Names({"first", "follow-up"}));
}

TEST_F(ExecutorImplTest, ThrowingTaskIsLoggedAndTheNextOneRuns) {
    Work throwing{[] { throw std::runtime_error("no"); }};
    Work throwing_a_number{[] { throw 5; }};
    Work next = Work::named("next", record);
    Watched& watched = watch();
    add_watched(executor, throwing, watched);
    add_watched(executor, throwing_a_number, watched);
    add_plain(executor, next);
    log.take();

    EXPECT_TRUE(executor.threadLoop());

    EXPECT_EQ(log.take(),
              debug_lines({"ExecutorImpl::threadLoop, start executing task\n",
                           "ExecutorImpl::threadLoop, error executing task, moving on\n",
                           "ExecutorImpl::threadLoop, start executing task\n",
                           "ExecutorImpl::threadLoop, error executing task, moving on\n",
                           "ExecutorImpl::threadLoop, start executing task\n",
                           "ExecutorImpl::threadLoop, complete executing task\n",
                           "ExecutorImpl::threadLoop exiting.\n"}));
    EXPECT_EQ(record.ran(), Names({"next"}));
    EXPECT_EQ(watched.alive, 0);
}

TEST_F(ExecutorImplTest, PassWhoseOnlyTaskThrewLogsItsEnd) {
    Work throwing{[] { throw std::runtime_error("no"); }};
    add_plain(executor, throwing);

    executor.threadLoop();

    EXPECT_EQ(log.texts().back(), "ExecutorImpl::threadLoop exiting.\n");
}

TEST_F(ExecutorImplTest, TaskWhoseStatusThrowsRunsAtOnce) {
    Work work = Work::named("task", record);
    Work next = Work::named("next", record);
    Watched& watched = watch();
    watched.timeout = 60;
    watched.status = []() -> int { throw std::runtime_error("no"); };
    add_watched(executor, work, watched);
    add_plain(executor, next);
    log.take();

    EXPECT_TRUE(executor.threadLoop());

    EXPECT_EQ(record.ran(), Names({"task", "next"}));
    EXPECT_EQ(watched.alive, 0);
    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop, start executing task\n",
                                       "ExecutorImpl::threadLoop, complete executing task\n",
                                       "ExecutorImpl::threadLoop exiting.\n"}));
}

TEST_F(ExecutorImplTest, ParametersThatCannotBeClonedQueueNothing) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    watched.on_clone = [] { throw std::runtime_error("no"); };

    EXPECT_THROW(add_watched(executor, work, watched), std::runtime_error);
    executor.threadLoop();

    EXPECT_EQ(record.ran(), Names());
    EXPECT_EQ(watched.alive, 0);
}

TEST_F(ExecutorImplTest, RequeuedTaskRunsAfterThoseThatAreQueued) {
    Work queued = Work::named("queued", record);
    Work requeued = Work::named("requeued", record);
    Watched& watched = watch();
    add_plain(executor, queued);
    log.take();

    executor.requeue({do_work, &requeued, new WatchedParameters(watched)});

    EXPECT_EQ(log.take(), std::vector<LogLine>());
    executor.threadLoop();
    EXPECT_EQ(record.ran(), Names({"queued", "requeued"}));
    EXPECT_EQ(watched.alive, 0);
}

TEST_F(ExecutorImplTest, EmptyQueueCountsAsDeferring) {
    EXPECT_TRUE(executor.tasks_deferring());
}

TEST_F(ExecutorImplTest, QueueIsDeferringAsLongAsAllItsTasksAre) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    add_watched(executor, work, watched);
    time.advance(1s);
    add_watched(executor, work, watched);

    time.advance(28s);
    EXPECT_TRUE(executor.tasks_deferring());
    time.advance(1s);
    EXPECT_FALSE(executor.tasks_deferring());
}

TEST_F(ExecutorImplTest, LookingAtDeferralsEndsThoseThatHavePassed) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    add_watched(executor, work, watched);
    time.advance(30s);

    EXPECT_FALSE(executor.tasks_deferring());

    watched.defer_time = 100;
    executor.threadLoop();
    EXPECT_EQ(record.ran(), Names({"task"}));
}

TEST_F(ExecutorImplTest, LineGoesToTheSinkAtTheLevelOfDebugging) {
    log.take();

    executor.debug("a line\n");

    EXPECT_EQ(log.take(), debug_lines({"a line\n"}));
}

TEST_F(ExecutorImplTest, TaskThatComesWithTheFirstLineIsRejected) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    alignas(ExecutorImpl) std::array<unsigned char, sizeof(ExecutorImpl)> place{};
    auto* made = reinterpret_cast<ExecutorImpl*>(place.data());
    log.take();
    log.hook = [&](const LogLine& line) {
        if (line.text == "ExecutorImpl::ExecutorImpl: ENTER.\n") {
            add_watched(*made, work, watched);
        }
    };

    made = new (place.data()) ExecutorImpl(&log);

    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::ExecutorImpl: ENTER.\n",
                                       "ExecutorImpl::add_task: ENTER.\n",
                                       "ExecutorImpl::ExecutorImpl existing, task rejected.\n"}));
    EXPECT_EQ(watched.clones, 0);
    made->~ExecutorImpl();
}

TEST_F(ExecutorImplTest, ExecutorWithoutALogSinkRunsItsTasks) {
    ExecutorImpl silent(nullptr);
    Work work = Work::named("task", record);
    Watched& watched = watch();
    log.take();

    add_watched(silent, work, watched);
    silent.threadLoop();

    EXPECT_EQ(record.ran(), Names({"task"}));
    EXPECT_EQ(log.take(), std::vector<LogLine>());
}

TEST_F(ExecutorImplTest, TasksQueuedAtDestructionNeverRunAndTheirParametersAreDeleted) {
    Work work = Work::named("task", record);
    Watched& watched = watch();
    watched.defer_time = 30;
    {
        ExecutorImpl ending(&log);
        add_watched(ending, work, watched);
        add_watched(ending, work, watched);
        add_plain(ending, work);
        EXPECT_EQ(watched.alive, 2);
        log.take();
    }

    EXPECT_EQ(watched.alive, 0);
    EXPECT_EQ(record.ran(), Names());
    EXPECT_EQ(log.take(), std::vector<LogLine>());
}

TEST_F(ExecutorImplTest, TaskAddedOnceDestructionHasBegunIsRejectedAndNotCloned) {
    Work work = Work::named("task", record);
    Watched& late = watch();
    Watched& watched = watch();
    std::optional<ExecutorImpl> ending(&log);
    add_watched(*ending, work, watched);
    ExecutorInterface& queue = *ending;
    watched.on_delete = [&] { add_watched(queue, work, late); };
    log.take();

    ending.reset();

    EXPECT_EQ(log.take(), debug_lines({"ExecutorImpl::add_task: ENTER.\n",
                                       "ExecutorImpl::ExecutorImpl existing, task rejected.\n"}));
    EXPECT_EQ(late.clones, 0);
    EXPECT_EQ(record.ran(), Names());
}

TEST(ExecutorImplDeathTest, SinkThatThrowsEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    RecordingLog log;
    ExecutorImpl executor(&log);
    log.hook = [](const LogLine& line) {
        throw std::runtime_error("the host failed: " + line.text);
    };

    EXPECT_DEATH(executor.debug("line"), "the host failed: line");
}

TEST(ExecutorImplDeathTest, NullFunctorFailsAnAssertion) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    RecordingLog log;
    ExecutorImpl executor(&log);
    log.hook = [](const LogLine&) { std::_Exit(0); };  // no line comes before the assertion

    EXPECT_DEATH(executor.add_task(nullptr, nullptr, nullptr), "functor");
}

}  // namespace
}  // namespace headsetmgmt
