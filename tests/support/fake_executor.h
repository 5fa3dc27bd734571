// SPDX-License-Identifier: Apache-2.0
// A queue of tasks that the test runs one by one.

#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "headsetmgmt/executor.h"

#include "support/nth_call.h"

namespace headsetmgmt::test_support {

/// Keeps clones of the parameters, as every executor does, and runs tasks on the test's thread.
/// Status, time-out and deferral of a task are not looked at: the test reads them with `params`.
/// Any thread may add.
class FakeExecutor final : public ExecutorInterface {
public:
    FakeExecutor() = default;
    FakeExecutor(const FakeExecutor&) = delete;
    FakeExecutor& operator=(const FakeExecutor&) = delete;

    /// Called in each `add_task` before anything is queued; may throw.
    std::function<void()> hook;

    /// Adds nothing any more, as an executor that is being deleted.
    bool rejecting = false;

    /// Throws `std::runtime_error` "fake executor" from the `n`th `add_task` from now, 1 being the
    /// next; nothing is queued by that call.
    void throw_at(int n) { fault.choose(n); }

    void add_task(task_functor functor, void* context, TaskParametersInterface* params) override;

    /// Number of queued tasks.
    std::size_t size() const;

    /// The queue's own parameters of a queued task, the oldest at 0: null for a task without, and
    /// for an index past the last. Borrowed until the task runs.
    TaskParametersInterface* params(std::size_t index = 0) const;

    /// The context of a queued task; null for an index past the last.
    void* context(std::size_t index = 0) const;

    /// Takes a task off the queue, the oldest at 0, runs it and deletes its parameters, also if
    /// it throws; the exception passes on. False if the queue is empty.
    bool run_next(std::size_t index = 0);

    /// Runs as many tasks as there are now; what these add stays queued. Answers how many ran.
    std::size_t run_all();

    /// Deletes all queued tasks without running them.
    void drop_all();

private:
    struct Queued {
        task_functor functor;
        void* context;
        std::unique_ptr<TaskParametersInterface> params;
    };

    mutable std::mutex mutex;  // guards the queue
    std::deque<Queued> queue;
    NthCall fault;
};

}  // namespace headsetmgmt::test_support
