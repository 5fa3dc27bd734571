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

/// Runs queued tasks on its own thread, which the owner starts with `run`, asks to leave with
/// `requestExit` and joins before deleting the object.
class ExecutorImpl : public ExecutorInterface, public vix::Thread {
public:
    /// `log_sink` is borrowed and may be null: the executor then writes no lines.
    explicit ExecutorImpl(log::HostLogInterface* log_sink);

    void add_task(task_functor functor, void* context, TaskParametersInterface* params) override;

    /// Drops the tasks that are still queued. The thread must have ended.
    ~ExecutorImpl() override;

    /// One pass: runs what may run, then sleeps 50 milliseconds. Always true. A pass ends early,
    /// between two tasks, when the thread was asked to leave.
    bool threadLoop() override;

    /// Whether all queued tasks are held back; true without any. Looks at them from the oldest to
    /// the first that is not, and so ends the deferrals that have passed.
    bool tasks_deferring() REQUIRES(queue_mutex);

    /// Puts a task at the back of the queue, which owns its parameters from then on. Any thread.
    void requeue(Task task);

    /// Asks the worker to leave after the task that it is in. Always true. Any thread.
    bool requestExit();

    /// Hands `line` to the log sink, if there is one, at the level of debugging. A sink that throws
    /// ends the process. Any thread.
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
    // No task is added: not made yet, or being deleted.
    bool exiting GUARDED_BY(queue_mutex) = true;
    log::HostLogInterface* log;

    /// What the executor says, ready to be handed over: a line takes no memory.
    struct Lines {
        const std::string add_task = "ExecutorImpl::add_task: ENTER.\n";
        const std::string deferred = "ExecutorImpl: add deferred task.\n";
        // The constructor's name, and "existing": receivers know the lines as they are.
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
