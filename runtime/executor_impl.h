// SPDX-License-Identifier: Apache-2.0
// The queue of tasks and the worker thread that drains it.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "headsetmgmt/executor.h"
#include "headsetmgmt/log.h"

#include "runtime/mutex.h"
#include "runtime/thread.h"

namespace headsetmgmt {

/// Runs queued tasks on its own thread. The owner starts it with `run`, ends it with `requestExit`
/// and joins it before deleting the object.
class ExecutorImpl : public ExecutorInterface, public vix::Thread {
public:
    /// `log_sink` is borrowed; null for no lines.
    explicit ExecutorImpl(log::HostLogInterface* log_sink);

    void add_task(task_functor functor, void* context, TaskParametersInterface* params) override;

    /// Drops the tasks that are still queued. The thread must have ended.
    ~ExecutorImpl() override;

    /// One pass: runs the tasks that may run, then sleeps 50 milliseconds. Always true. A requested
    /// exit ends the pass between two tasks.
    bool threadLoop() override;

    /// Whether all queued tasks are held back; true for an empty queue. Examines them from the
    /// oldest to the first that is not held back, and ends the deferrals that have passed. With the
    /// queue locked, or while no other thread uses the executor, which no annotation can state.
    bool tasks_deferring() REQUIRES(queue_mutex);

    /// Puts a task, with ownership of its parameters, at the back of the queue. Any thread.
    void requeue(Task task);

    /// Requests that the worker ends after its current task. Always true. Any thread.
    bool requestExit();

    /// Writes `line` to the log sink, if there is one, at debug level. A sink that throws ends the
    /// process. Any thread.
    void debug(const std::string& line) noexcept;

private:
    std::vector<Task> close_queue();
    std::optional<Task> take_next();
    bool is_exiting();
    bool add(const Task& task);
    bool handle(Task& task);
    void execute(const Task& task);

    std::vector<Task> queue GUARDED_BY(queue_mutex);  // the oldest task is at the front
    vix::Mutex queue_mutex;
    // Rejects tasks: under construction or being deleted.
    bool exiting GUARDED_BY(queue_mutex) = true;
    log::HostLogInterface* log;

    /// The executor's log lines, prepared so that writing one takes no memory.
    struct Lines {
        const std::string add_task = "ExecutorImpl::add_task: ENTER.\n";
        const std::string deferred = "ExecutorImpl: add deferred task.\n";
        // The constructor's name, and "existing": both are part of the fixed texts.
        const std::string adding = "ExecutorImpl::ExecutorImpl adding a task\n";
        const std::string rejected = "ExecutorImpl::ExecutorImpl existing, task rejected.\n";
        const std::string pass_ends = "ExecutorImpl::threadLoop exiting.\n";
        const std::string timed_out = "ExecutorImpl: threadloop timeout reached\n";
        const std::string dropped = "ExecutorImpl: drop task\n";
        const std::string starts = "ExecutorImpl::threadLoop, start executing task\n";
        const std::string completed = "ExecutorImpl::threadLoop, complete executing task\n";
        const std::string failed = "ExecutorImpl::threadLoop, error executing task, moving on\n";
    };
    const Lines lines;
};

}  // namespace headsetmgmt
