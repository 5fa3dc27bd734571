// SPDX-License-Identifier: Apache-2.0
// The executor calls nobody with its queue locked.

#include <chrono>
#include <future>
#include <memory>
#include <set>
#include <stdexcept>
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

/// Whether another thread can add a task right now. If it cannot, it still does once the caller has
/// let the queue go, so that the test ends.
class QueueProbe {
public:
    explicit QueueProbe(ExecutorInterface& probed) : executor(probed) {}

    bool queue_is_free() {
        additions.push_back(
            std::async(std::launch::async, [this] { add_plain(executor, nothing); }));
        return additions.back().wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    }

private:
    ExecutorInterface& executor;
    Work nothing{[] {}};
    std::vector<std::future<void>> additions;
};

TEST(ExecutorLockingTest, EveryLineIsDeliveredWithoutTheQueueMutex) {
    VirtualTime time(1000, VirtualTime::Sleepers::move_the_clock);
    RecordingLog log;
    Watched deferred;
    deferred.defer_time = 30;
    Watched dropped;
    dropped.status = [] { return TaskParametersInterface::drop; };
    Watched unready;
    unready.status = [] { return TaskParametersInterface::not_ready; };
    ExecutorImpl executor(&log);
    QueueProbe probe(executor);
    std::set<std::string> probed;
    const auto tester = std::this_thread::get_id();
    log.hook = [&](const LogLine& line) {
        // Each text once, or every added task would write lines that add another.
        if (std::this_thread::get_id() == tester && probed.insert(line.text).second) {
            EXPECT_TRUE(probe.queue_is_free()) << line.text;
        }
    };
    Work work{[] {}};
    Work throwing{[] { throw std::runtime_error("no"); }};

    add_watched(executor, work, deferred);
    add_watched(executor, work, dropped);
    add_watched(executor, work, unready);
    add_plain(executor, throwing);
    executor.threadLoop();

    const std::set<std::string> every_line = {
        "ExecutorImpl::add_task: ENTER.\n",
        "ExecutorImpl: add deferred task.\n",
        "ExecutorImpl::ExecutorImpl adding a task\n",
        "ExecutorImpl: drop task\n",
        "ExecutorImpl: threadloop timeout reached\n",
        "ExecutorImpl::threadLoop, start executing task\n",
        "ExecutorImpl::threadLoop, complete executing task\n",
        "ExecutorImpl::threadLoop, error executing task, moving on\n",
        "ExecutorImpl::threadLoop exiting.\n",
    };
    EXPECT_EQ(probed, every_line);
}

TEST(ExecutorLockingTest, ParametersAreClonedWithoutTheQueueMutex) {
    RecordingLog log;
    Watched watched;
    ExecutorImpl executor(&log);
    QueueProbe probe(executor);
    Work work{[] {}};
    watched.on_clone = [&] { EXPECT_TRUE(probe.queue_is_free()); };

    add_watched(executor, work, watched);

    EXPECT_EQ(watched.clones, 1);
}

TEST(ExecutorLockingTest, StatusIsAskedAndTaskRunWithoutTheQueueMutex) {
    VirtualTime time(1000, VirtualTime::Sleepers::move_the_clock);
    RecordingLog log;
    ExecutorImpl executor(&log);
    QueueProbe probe(executor);
    int runs = 0;
    Work work{[&] {
        ++runs;
        EXPECT_TRUE(probe.queue_is_free());
    }};
    Watched watched;
    watched.status = [&] {
        EXPECT_TRUE(probe.queue_is_free());
        return TaskParametersInterface::ready;
    };

    add_watched(executor, work, watched);
    executor.threadLoop();

    EXPECT_EQ(runs, 1);
    EXPECT_EQ(watched.checks, 1);
}

TEST(ExecutorLockingTest, ParametersAreDeletedWithoutTheQueueMutex) {
    VirtualTime time(1000, VirtualTime::Sleepers::move_the_clock);
    RecordingLog log;
    ExecutorImpl executor(&log);
    QueueProbe probe(executor);
    Work work{[] {}};
    Watched watched;
    add_watched(executor, work, watched);
    bool deleted = false;
    watched.on_delete = [&] {
        deleted = true;
        EXPECT_TRUE(probe.queue_is_free());
    };

    executor.threadLoop();

    EXPECT_TRUE(deleted);
}

TEST(ExecutorLockingTest, TaskThatComesWhileTheOthersAreDroppedIsRejected) {
    RecordingLog log;
    auto owner = std::make_unique<ExecutorImpl>(&log);
    ExecutorImpl& executor = *owner;
    Work work{[] {}};
    Watched queued;
    add_watched(executor, work, queued);
    Event cloning;
    Event dropping;
    Watched late;
    late.on_clone = [&] {
        cloning.happen();
        EXPECT_TRUE(dropping.wait());
    };
    std::future<void> adding =
        std::async(std::launch::async, [&] { add_watched(executor, work, late); });
    ASSERT_TRUE(cloning.wait());
    queued.on_delete = [&] {
        dropping.happen();
        EXPECT_EQ(adding.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    };
    log.take();

    owner.reset();

    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"ExecutorImpl::ExecutorImpl adding a task\n",
                                        "ExecutorImpl::ExecutorImpl existing, task rejected.\n"}));
    EXPECT_EQ(late.alive, 0);
}

}  // namespace
}  // namespace headsetmgmt
