// SPDX-License-Identifier: Apache-2.0
// Queue of work for the library's one worker thread.

#pragma once

#include <algorithm>
#include <ctime>

namespace headsetmgmt {

/// Parameters of a queued task, which also decide when it may run.
///
/// The executor owns a clone and deletes it when the task has run or was dropped.
class TaskParametersInterface {
public:
    /// Values of `get_type`, by which `task_forwarder` chooses the work.
    enum Kind : int { configure_accessory = 0, send_inventory = 1 };

    /// Results of `check_status`; any other value counts as `ready`.
    enum Status : int { ready = 1, not_ready = 2, drop = 3 };

    TaskParametersInterface() = default;
    virtual ~TaskParametersInterface() = default;

    TaskParametersInterface& operator=(const TaskParametersInterface&) = delete;

    /// A new, independent copy, owned by the caller. Any thread.
    virtual TaskParametersInterface* clone() const = 0;

    /// One of `Kind`. Any thread.
    virtual int get_type() const = 0;

    /// Whether the task may run now: one of `Status`. May change the result of `get_defer_time`.
    /// Worker.
    virtual int check_status() = 0;

    /// Seconds after queueing for which a task that is not ready is held back. Then it runs anyway.
    /// Worker.
    virtual unsigned int get_timeout() const { return 0; }

    /// Seconds until the task is examined for the first time, or again. Any thread. The queue may
    /// be locked during the call: the function must not call the executor.
    virtual unsigned int get_defer_time() const { return 0; }

protected:
    TaskParametersInterface(const TaskParametersInterface&) = default;
};

/// The work of a task. Worker.
using task_functor = void (*)(void* context, TaskParametersInterface* params);

/// Runs tasks one at a time on a thread of the library, in the order in which they were added,
/// except those held back.
///
/// Any thread may add tasks, including a running task. Made and deleted by the plug-in, which knows
/// the concrete class; everyone else borrows it through `Plugins`.
class ExecutorInterface {
public:
    /// One entry of the queue. Copies share `params`, which belong to the queue.
    ///
    /// Times are those of the system clock: setting it back by an hour adds an hour to the wait.
    struct Task {
        /// A task that is queued now and not deferred.
        Task(task_functor functor, void* task_context, TaskParametersInterface* parameters)
            : func(functor), context(task_context), params(parameters),
              creation_time(std::time(nullptr)), deferral_start_time(creation_time) {}

        /// Whether a task that is not ready has waited long enough; always true without parameters.
        bool timed_out() const {
            if (params == nullptr) {
                return true;
            }
            const double waited = std::difftime(std::time(nullptr), creation_time);
            return waited >= std::max(static_cast<double>(params->get_timeout()), 0.0);
        }

        /// Whether the task is still held back. After the deferral has passed, stays false until
        /// the next `set_deferring`.
        bool deferring() {
            if (!deferring_flag || params == nullptr) {
                return false;
            }
            const double passed = std::difftime(std::time(nullptr), deferral_start_time);
            deferring_flag = std::max(static_cast<double>(params->get_defer_time()), 0.0) > passed;
            return deferring_flag;
        }

        /// Holds the task back from now on, for `get_defer_time` seconds.
        void set_deferring() {
            deferral_start_time = std::time(nullptr);
            deferring_flag = true;
        }

        task_functor func;
        void* context;
        TaskParametersInterface* params;
        std::time_t creation_time;
        std::time_t deferral_start_time;
        bool deferring_flag = false;
    };

    /// Queues `functor(context, <clone of params>)`.
    ///
    /// The caller keeps `params`, of which the executor stores a clone. Null means a task without
    /// parameters, which runs at once. `context` is borrowed until the task has run or was dropped.
    /// `functor` must not be null. Queues nothing while the executor is being deleted. Any thread.
    virtual void add_task(task_functor functor, void* context, TaskParametersInterface* params) = 0;

protected:
    // No virtual destructor: nobody deletes an executor through this interface.
    ~ExecutorInterface() = default;
};

/// The functor of all tasks of the library. Calls, depending on the type of `params`, the
/// configuration manager that `context` points to or the inventory sender. Does nothing for null
/// parameters or another type. Worker. Not exported by the shared library; for code that
/// links the static `headsetmgmt_core`.
void task_forwarder(void* context, TaskParametersInterface* params);

}  // namespace headsetmgmt
