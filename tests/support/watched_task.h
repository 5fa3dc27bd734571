// SPDX-License-Identifier: Apache-2.0
// A task that reports to the test what the executor does with it.

#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "headsetmgmt/executor.h"

namespace headsetmgmt::test_support {

/// What a task's parameters answer, and how they were used. Shared by all their clones; set while
/// no other thread has a clone.
struct Watched {
    std::function<int()> status = [] { return TaskParametersInterface::ready; };
    unsigned int timeout = 0;
    unsigned int defer_time = 0;
    std::function<void()> on_clone = [] {};
    std::function<void()> on_delete = [] {};

    std::atomic<int> checks = 0;
    std::atomic<int> clones = 0;
    std::atomic<int> alive = 0;
};

/// Parameters that answer what their `Watched` says.
class WatchedParameters : public TaskParametersInterface {
public:
    explicit WatchedParameters(Watched& observer) : watched(observer) { ++watched.alive; }
    ~WatchedParameters() override {
        --watched.alive;
        watched.on_delete();
    }

    TaskParametersInterface* clone() const override {
        ++watched.clones;
        watched.on_clone();
        return new WatchedParameters(watched);
    }
    int get_type() const override { return configure_accessory; }
    int check_status() override {
        ++watched.checks;
        return watched.status();
    }
    unsigned int get_timeout() const override { return watched.timeout; }
    unsigned int get_defer_time() const override { return watched.defer_time; }

    Watched& watched;
};

/// Which tasks ran, in their order. Any thread.
class RunRecord {
public:
    void add(const std::string& task) {
        const std::lock_guard<std::mutex> lock(mutex);
        tasks.push_back(task);
    }
    std::vector<std::string> ran() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return tasks;
    }

private:
    mutable std::mutex mutex;
    std::vector<std::string> tasks;
};

/// The context of a task that does `work`.
struct Work {
    std::function<void()> work;

    /// Work that only records the task's name.
    static Work named(const std::string& name, RunRecord& record) {
        return {[name, &record] { record.add(name); }};
    }
};

/// The function of such a task.
inline void do_work(void* context, TaskParametersInterface* /*params*/) {
    static_cast<Work*>(context)->work();
}

/// Queues `work`, with parameters that only the executor keeps.
inline void add_watched(ExecutorInterface& executor, Work& work, Watched& watched) {
    WatchedParameters params(watched);
    executor.add_task(do_work, &work, &params);
}

/// Queues `work` without parameters.
inline void add_plain(ExecutorInterface& executor, Work& work) {
    executor.add_task(do_work, &work, nullptr);
}

}  // namespace headsetmgmt::test_support
