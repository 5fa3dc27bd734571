// Queue of work for the library's one worker thread.

#pragma once

#include <algorithm>
#include <ctime>

namespace headsetmgmt {

/// What a queued task carries, and what it says about when it may run.
///
/// The executor keeps a clone of its own and deletes it when the task has run or was dropped.
class TaskParametersInterface {
public:
    /// What `task_forwarder` makes of a task, by `get_type`.
    enum Kind : int { configure_accessory = 0, send_inventory = 1 };

    /// Answers of `check_status`; any other value counts as ready.
    enum Status : int { ready = 1, not_ready = 2, drop = 3 };

    TaskParametersInterface() = default;
    virtual ~TaskParametersInterface() = default;

    TaskParametersInterface& operator=(const TaskParametersInterface&) = delete;

    /// A new, independent copy, owned by the caller. Any thread.
    virtual TaskParametersInterface* clone() const = 0;

    /// One of `Kind`. Any thread.
    virtual int get_type() const = 0;

    /// Whether the task may run now: one of `Status`. May change what `get_defer_time` answers.
    /// Worker.
    virtual int check_status() = 0;

    /// For how many seconds after it was queued a task that is not ready is held back; then it runs
    /// all the same. Worker.
    virtual unsigned int get_timeout() const { return 0; }

    /// How many seconds pass before the task is looked at again, or for the first time. Any thread.
    /// The queue may be locked meanwhile: this calls nothing of the executor.
    virtual unsigned int get_defer_time() const { return 0; }

protected:
    TaskParametersInterface(const TaskParametersInterface&) = default;
};

/// The work of a task. Worker.
using task_functor = void (*)(void* context, TaskParametersInterface* params);

/// Runs tasks one at a time, in the order in which they were added but for those held back, away
/// from the host's threads.
///
/// Any thread may add tasks, a running task included. Made and deleted by the plug-in, which knows
/// the concrete class; everyone else borrows it through `Plugins`.
class ExecutorInterface {
public:
    /// One entry of the queue. Copies share `params`, which belong to the queue.
    ///
    /// Waits by the clock of the system: one that is set back by an hour adds an hour to the wait.
    struct Task {
        /// Queued now, not deferred.
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

        /// Whether the task is still held back. Once the deferral has passed this stays false until
        /// the next `set_deferring`.
        bool deferring() {
            if (!deferring_flag || params == nullptr) {
                return false;
            }
            const double passed = std::difftime(std::time(nullptr), deferral_start_time);
            deferring_flag = std::max(static_cast<double>(params->get_defer_time()), 0.0) > passed;
            return deferring_flag;
        }

        /// Holds the task back from now on, for as long as its parameters say.
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
    /// Keeps its own clone of `params` (null: a task without parameters, which runs at once); the
    /// caller keeps the original. `context` is borrowed until the task has run or was dropped.
    /// `functor` must not be null. Nothing is queued once the executor is being deleted. Any
    /// thread.
    virtual void add_task(task_functor functor, void* context, TaskParametersInterface* params) = 0;

protected:
    // No virtual destructor: nobody deletes an executor through this interface.
    ~ExecutorInterface() = default;
};

/// The task function that everyone in the library queues: passes `params` on by their kind, to the
/// configuration manager that `context` points to or to the inventory sender. Does nothing for null
/// parameters and for any other kind. Worker. Not exported by the shared library; for code that
/// links the static `headsetmgmt_core`.
void task_forwarder(void* context, TaskParametersInterface* params);

}  // namespace headsetmgmt
