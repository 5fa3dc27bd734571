// SPDX-License-Identifier: Apache-2.0
// A queue of tasks that the test runs one by one.

#include "support/fake_executor.h"

#include <stdexcept>
#include <utility>

namespace headsetmgmt::test_support {

namespace {

using Lock = std::lock_guard<std::mutex>;

}  // namespace

void FakeExecutor::add_task(task_functor functor, void* context, TaskParametersInterface* params) {
    if (fault.is_now()) {
        throw std::runtime_error("fake executor");
    }
    if (hook) {
        hook();
    }
    if (rejecting) {
        return;
    }
    Queued task{functor, context, nullptr};
    if (params != nullptr) {
        task.params.reset(params->clone());
    }
    const Lock lock(mutex);
    queue.push_back(std::move(task));
}

std::size_t FakeExecutor::size() const {
    const Lock lock(mutex);
    return queue.size();
}

TaskParametersInterface* FakeExecutor::params(std::size_t index) const {
    const Lock lock(mutex);
    return index < queue.size() ? queue[index].params.get() : nullptr;
}

void* FakeExecutor::context(std::size_t index) const {
    const Lock lock(mutex);
    return index < queue.size() ? queue[index].context : nullptr;
}

bool FakeExecutor::run_next(std::size_t index) {
    Queued task;
    {
        const Lock lock(mutex);
        if (index >= queue.size()) {
            return false;
        }
        const auto place = queue.begin() + static_cast<std::ptrdiff_t>(index);
        task = std::move(*place);
        queue.erase(place);
    }
    task.functor(task.context, task.params.get());
    return true;
}

std::size_t FakeExecutor::run_all() {
    const std::size_t tasks = size();
    std::size_t ran = 0;
    while (ran < tasks && run_next()) {
        ++ran;
    }
    return ran;
}

void FakeExecutor::drop_all() {
    std::deque<Queued> dropped;
    const Lock lock(mutex);
    dropped.swap(queue);
}

}  // namespace headsetmgmt::test_support
