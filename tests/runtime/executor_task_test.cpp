// SPDX-License-Identifier: Apache-2.0
// One entry of the executor's queue: how long it is held back, and when it has waited enough.

#include <chrono>

#include <gtest/gtest.h>

#include "headsetmgmt/executor.h"

#include "support/virtual_time.h"
#include "support/watched_task.h"

namespace headsetmgmt {
namespace {

using test_support::VirtualTime;
using test_support::Watched;
using test_support::WatchedParameters;
using Task = ExecutorInterface::Task;
using namespace std::chrono_literals;

void do_nothing(void* /*context*/, TaskParametersInterface* /*params*/) {}

TEST(ExecutorTaskTest, TaskKeepsWhatItIsMadeOf) {
    VirtualTime time(1000);
    Watched watched;
    WatchedParameters params(watched);
    int context = 0;

    const Task task(do_nothing, &context, &params);

    EXPECT_EQ(task.func, do_nothing);
    EXPECT_EQ(task.context, &context);
    EXPECT_EQ(task.params, &params);
    EXPECT_EQ(task.creation_time, 1000);
    EXPECT_EQ(task.deferral_start_time, 1000);
    EXPECT_FALSE(task.deferring_flag);
}

TEST(ExecutorTaskTest, ParametersWantNeitherTimeoutNorDeferralUnlessTheySaySo) {
    class Bare : public TaskParametersInterface {
        TaskParametersInterface* clone() const override { return new Bare; }
        int get_type() const override { return send_inventory; }
        int check_status() override { return ready; }
    };
    const Bare params;

    EXPECT_EQ(params.get_timeout(), 0U);
    EXPECT_EQ(params.get_defer_time(), 0U);
}

TEST(ExecutorTaskTest, TaskWithoutParametersIsAlwaysTimedOut) {
    VirtualTime time(1000);

    EXPECT_TRUE(Task(do_nothing, nullptr, nullptr).timed_out());
}

TEST(ExecutorTaskTest, TaskIsTimedOutFromItsLastSecondOn) {
    VirtualTime time(1000);
    Watched watched;
    watched.timeout = 60;
    WatchedParameters params(watched);
    const Task task(do_nothing, nullptr, &params);

    time.advance(59s);
    EXPECT_FALSE(task.timed_out());
    time.advance(1s);
    EXPECT_TRUE(task.timed_out());
}

TEST(ExecutorTaskTest, TaskWithTimeoutZeroIsTimedOutAtOnce) {
    VirtualTime time(1000);
    Watched watched;
    WatchedParameters params(watched);

    EXPECT_TRUE(Task(do_nothing, nullptr, &params).timed_out());
}

TEST(ExecutorTaskTest, DeferralDoesNotPutTheTimeoutOff) {
    VirtualTime time(1000);
    Watched watched;
    watched.timeout = 60;
    WatchedParameters params(watched);
    Task task(do_nothing, nullptr, &params);
    time.advance(59s);

    task.set_deferring();
    time.advance(1s);

    EXPECT_TRUE(task.timed_out());
}

TEST(ExecutorTaskTest, ClockThatIsSetBackDoesNotTimeOut) {
    VirtualTime time(1000);
    Watched watched;
    WatchedParameters params(watched);
    const Task task(do_nothing, nullptr, &params);

    time.advance(-5s);

    EXPECT_FALSE(task.timed_out());
}

TEST(ExecutorTaskTest, TaskIsHeldBackUntilAClockThatWasSetBackIsPastItsDeferral) {
    VirtualTime time(100000);
    Watched watched;
    watched.defer_time = 30;
    WatchedParameters params(watched);
    Task task(do_nothing, nullptr, &params);
    task.set_deferring();

    time.advance(-3600s);
    EXPECT_TRUE(task.deferring());
    time.advance(3629s);
    EXPECT_TRUE(task.deferring());
    time.advance(1s);
    EXPECT_FALSE(task.deferring());
}

TEST(ExecutorTaskTest, TaskIsTimedOutWhenAClockThatWasSetBackIsPastItsTimeout) {
    VirtualTime time(100000);
    Watched watched;
    watched.timeout = 60;
    WatchedParameters params(watched);
    Task task(do_nothing, nullptr, &params);

    time.advance(-3600s);
    task.set_deferring();

    time.advance(3659s);
    EXPECT_FALSE(task.timed_out());
    time.advance(1s);
    EXPECT_TRUE(task.timed_out());
}

TEST(ExecutorTaskTest, ClockThatIsSetBackChangesNoTimeOfATask) {
    VirtualTime time(100000);
    Watched watched;
    watched.defer_time = 30;
    WatchedParameters params(watched);
    Task task(do_nothing, nullptr, &params);

    time.advance(-3600s);
    task.set_deferring();
    EXPECT_EQ(task.deferral_start_time, 96400);
    time.advance(-3600s);
    EXPECT_TRUE(task.deferring());

    EXPECT_EQ(task.creation_time, 100000);
    EXPECT_EQ(task.deferral_start_time, 96400);
}

TEST(ExecutorTaskTest, ClockThatIsSetForwardEndsADeferral) {
    VirtualTime time(100000);
    Watched watched;
    watched.defer_time = 30;
    WatchedParameters params(watched);
    Task task(do_nothing, nullptr, &params);
    task.set_deferring();

    time.advance(3600s);
    EXPECT_FALSE(task.deferring());
    time.advance(-3600s);
    EXPECT_FALSE(task.deferring());
}

TEST(ExecutorTaskTest, NewTaskIsNotDeferring) {
    VirtualTime time(1000);
    Watched watched;
    watched.defer_time = 30;
    WatchedParameters params(watched);

    EXPECT_FALSE(Task(do_nothing, nullptr, &params).deferring());
}

TEST(ExecutorTaskTest, TaskWithoutParametersIsNeverDeferring) {
    VirtualTime time(1000);
    Task task(do_nothing, nullptr, nullptr);

    task.set_deferring();

    EXPECT_FALSE(task.deferring());
}

TEST(ExecutorTaskTest, DeferralEndsWithItsLastSecond) {
    VirtualTime time(1000);
    Watched watched;
    watched.defer_time = 30;
    WatchedParameters params(watched);
    Task task(do_nothing, nullptr, &params);
    time.advance(10s);
    task.set_deferring();

    time.advance(29s);
    EXPECT_TRUE(task.deferring());
    time.advance(1s);
    EXPECT_FALSE(task.deferring());
}

TEST(ExecutorTaskTest, DeferralThatHasEndedDoesNotComeBack) {
    VirtualTime time(1000);
    Watched watched;
    watched.defer_time = 30;
    WatchedParameters params(watched);
    Task task(do_nothing, nullptr, &params);
    task.set_deferring();
    time.advance(30s);
    EXPECT_FALSE(task.deferring());

    watched.defer_time = 100;

    EXPECT_FALSE(task.deferring());
    task.set_deferring();
    EXPECT_TRUE(task.deferring());
}

}  // namespace
}  // namespace headsetmgmt
