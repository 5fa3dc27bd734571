// SPDX-License-Identifier: Apache-2.0
// The queue of tasks and the worker thread that drains it.

#include "runtime/executor_impl.h"

#include <cstddef>
#include <memory>
#include <unistd.h>
#include <utility>

#include "core/locks.h"

// A null functor would crash the worker, far from the caller who queued it: checked in every build.
#undef NDEBUG
#include <cassert>

namespace headsetmgmt {

namespace {

using QueueLock = ScopedLock<vix::Mutex>;

constexpr std::size_t usual_tasks = 16;             // room from the start; the queue grows beyond
constexpr useconds_t pause_between_passes = 50000;  // microseconds

}  // namespace

ExecutorImpl::ExecutorImpl(log::HostLogInterface* log_sink) : log(log_sink) {
    queue.reserve(usual_tasks);
    debug("ExecutorImpl::ExecutorImpl: ENTER.\n");
    exiting = false;
}

ExecutorImpl::~ExecutorImpl() {
    // Without the lock: what deletes parameters may add a task, which is rejected then.
    for (const Task& task : close_queue()) {
        delete task.params;
    }
}

/// Rejects tasks from now on. Returns those still queued; the caller owns their parameters.
std::vector<ExecutorInterface::Task> ExecutorImpl::close_queue() {
    std::vector<Task> dropped;
    const QueueLock queue_lock(queue_mutex);
    exiting = true;
    dropped.swap(queue);
    return dropped;
}

void ExecutorImpl::add_task(task_functor functor, void* context, TaskParametersInterface* params) {
    assert(functor);
    debug(lines.add_task);
    if (is_exiting()) {
        debug(lines.rejected);
        return;
    }

    // Cloning and logging call foreign code, so both happen without the lock and before the worker
    // can see the task.
    std::unique_ptr<TaskParametersInterface> copy(params != nullptr ? params->clone() : nullptr);
    Task task(functor, context, copy.get());
    if (copy && copy->get_defer_time() != 0) {
        debug(lines.deferred);
        task.set_deferring();
    }
    debug(lines.adding);
    if (add(task)) {
        static_cast<void>(copy.release());  // owned by the queue
    } else {
        debug(lines.rejected);
    }
}

bool ExecutorImpl::requestExit() {
    return vix::Thread::requestExit();
}

bool ExecutorImpl::threadLoop() {
    unsigned int tasks_run = 0;
    // Checked before each task, or a full queue would delay a stop.
    while (!exit_requested()) {
        std::optional<Task> task = take_next();
        if (!task) {
            break;
        }
        if (handle(*task)) {
            ++tasks_run;
        }
    }
    usleep(pause_between_passes);
    // After every pass that ran a task, not only the last one.
    if (tasks_run != 0) {
        debug(lines.pass_ends);
    }
    return true;
}

std::optional<ExecutorInterface::Task> ExecutorImpl::take_next() {
    std::optional<Task> task;
    const QueueLock queue_lock(queue_mutex);
    if (!queue.empty() && !tasks_deferring()) {
        task = queue.front();
        queue.erase(queue.begin());
    }
    return task;
}

bool ExecutorImpl::tasks_deferring() {
    for (Task& task : queue) {
        if (!task.deferring()) {
            return false;
        }
    }
    return true;
}

void ExecutorImpl::requeue(Task task) {
    const QueueLock queue_lock(queue_mutex);
    queue.push_back(task);
}

bool ExecutorImpl::is_exiting() {
    const QueueLock queue_lock(queue_mutex);
    return exiting;
}

/// Queues a new task; false when the executor is being deleted.
bool ExecutorImpl::add(const Task& task) {
    const QueueLock queue_lock(queue_mutex);
    if (exiting) {
        return false;
    }
    queue.push_back(task);
    return true;
}

/// Runs a task that was taken from the queue, queues it again, or drops it; true when it ran.
bool ExecutorImpl::handle(Task& task) {
    std::unique_ptr<TaskParametersInterface> params(task.params);
    try {
        if (task.deferring()) {
            requeue(task);
            static_cast<void>(params.release());
            return false;
        }
        const int status = params ? params->check_status() : TaskParametersInterface::ready;
        if (status == TaskParametersInterface::not_ready) {
            if (!task.timed_out()) {
                task.set_deferring();
                requeue(task);
                static_cast<void>(params.release());
                return false;
            }
            debug(lines.timed_out);
        } else if (status == TaskParametersInterface::drop) {
            debug(lines.dropped);
            return false;
        }
    } catch (...) {
        // A task whose check or queueing throws runs: only the task itself can end the work that it
        // is part of.
    }
    execute(task);
    return true;
}

void ExecutorImpl::execute(const Task& task) {
    debug(lines.starts);
    bool completed = false;
    try {
        task.func(task.context, task.params);
        completed = true;
    } catch (...) {
        // An exception of a task must not end the worker.
    }
    debug(completed ? lines.completed : lines.failed);
}

void ExecutorImpl::debug(const std::string& line) noexcept {
    if (log != nullptr) {
        log->print(log::LogLevel::debug, line);
    }
}

}  // namespace headsetmgmt
