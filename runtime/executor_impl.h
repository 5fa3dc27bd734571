// The queue of tasks and the worker thread that drains it.

#pragma once

#include <atomic>
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
    /// `log_sink` is borrowed and may be null: the executor then says nothing.
    explicit ExecutorImpl(log::HostLogInterface* log_sink);

    void add_task(task_functor functor, void* context, TaskParametersInterface* params) override;

    /// Drops the tasks that are still queued. The thread must have ended.
    ~ExecutorImpl() override;

    /// One pass: runs what may run, then sleeps 50 milliseconds. Always true. A pass ends early,
    /// between two tasks, when the thread was asked to leave.
    bool threadLoop() override;

    /// Asks the worker to leave after the task that it is in. Always true. Any thread.
    bool requestExit();

private:
    std::optional<Task> take_next();
    bool tasks_deferring();
    bool append(Task task);
    bool handle(Task task);
    void execute(const Task& task);
    void debug(const std::string& line);

    std::vector<Task> queue;  // the oldest task is at the front
    vix::Mutex queue_mutex;   // guards the queue and what becomes of it, and nothing else
    // Changed with the mutex held. Looked at without it before a task is copied, and with it again
    // before the copy is queued.
    std::atomic<bool> exiting{false};
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
