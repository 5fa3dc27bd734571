// SPDX-License-Identifier: Apache-2.0
// What the headers of the threads, the mutexes and the executor promise, used with the types that
// they promise. It only has to compile.

#include <string>
#include <type_traits>

#include "headsetmgmt/executor.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/mutex.h"

#include "runtime/executor_impl.h"
#include "runtime/mutex.h"
#include "runtime/thread.h"

namespace headsetmgmt {
namespace {

template <typename Wanted, typename Declared>
constexpr bool is_of_type(Declared /*operation*/) {
    return std::is_same_v<Wanted, Declared>;
}

// Mutexes.

static_assert(std::is_default_constructible_v<vix::Mutex>);
static_assert(std::is_constructible_v<vix::Mutex, bool>);
static_assert(!std::is_polymorphic_v<vix::Mutex>);
static_assert(is_of_type<void (vix::Mutex::*)(bool)>(&vix::Mutex::initialize));
static_assert(is_of_type<bool (vix::Mutex::*)()>(&vix::Mutex::lock));
static_assert(is_of_type<void (vix::Mutex::*)()>(&vix::Mutex::unlock));
static_assert(is_of_type<bool (vix::Mutex::*)()>(&vix::Mutex::tryLock));

static_assert(std::is_abstract_v<MutexInterface>);
static_assert(std::has_virtual_destructor_v<MutexInterface>);
static_assert(std::is_base_of_v<MutexInterface, MutexImpl>);
static_assert(std::is_constructible_v<MutexImpl, bool>);
static_assert(is_of_type<bool (MutexImpl::*)()>(&MutexImpl::lock));
static_assert(is_of_type<void (MutexImpl::*)()>(&MutexImpl::unlock));
static_assert(is_of_type<bool (MutexImpl::*)()>(&MutexImpl::tryLock));

static_assert(std::is_abstract_v<MutexFactoryInterface>);
static_assert(std::has_virtual_destructor_v<MutexFactoryInterface>);

[[maybe_unused]] void use_locks_of_a_factory() {
    MutexFactoryImpl made;
    MutexFactoryInterface& factory = made;
    MutexInterface* mutex = factory.create_mutex(true);
    mutex->lock();
    mutex->unlock();
    factory.delete_mutex(mutex);
}

// Threads.

static_assert(vix::THREAD_FLAG_REALTIME == 1);
static_assert(vix::THREAD_FLAG_DETACHED == 2);
static_assert(vix::THREAD_FLAG_AUTO_DELETE == 4);

static_assert(std::is_abstract_v<vix::Thread>);
static_assert(std::has_virtual_destructor_v<vix::Thread>);
static_assert(
    is_of_type<bool (vix::Thread::*)(const char*, unsigned int, unsigned int)>(&vix::Thread::run));
static_assert(is_of_type<bool (vix::Thread::*)()>(&vix::Thread::requestExit));
static_assert(is_of_type<bool (vix::Thread::*)()>(&vix::Thread::join));
static_assert(is_of_type<bool (vix::Thread::*)()>(&vix::Thread::detach));
static_assert(is_of_type<bool (vix::Thread::*)()>(&vix::Thread::running));
static_assert(is_of_type<void (vix::Thread::*)()>(&vix::Thread::threadEntryPoint));
static_assert(is_of_type<void* (*)(void*)>(&vix::Thread::staticThreadEntryPoint));

/// All that a thread of one's own has to define.
class OneRound : public vix::Thread {
    bool threadLoop() override { return false; }
};

[[maybe_unused]] void run_a_thread_of_ones_own() {
    OneRound thread;
    if (thread.run(nullptr, vix::THREAD_FLAG_REALTIME, 1)) {
        thread.requestExit();
        thread.join();
    }
}

// Tasks.

static_assert(std::is_same_v<task_functor, void (*)(void*, TaskParametersInterface*)>);
static_assert(is_of_type<task_functor>(&task_forwarder));

static_assert(std::is_abstract_v<TaskParametersInterface>);
static_assert(std::has_virtual_destructor_v<TaskParametersInterface>);
static_assert(is_of_type<TaskParametersInterface* (TaskParametersInterface::*)() const>(
    &TaskParametersInterface::clone));
static_assert(
    is_of_type<int (TaskParametersInterface::*)() const>(&TaskParametersInterface::get_type));
static_assert(
    is_of_type<int (TaskParametersInterface::*)()>(&TaskParametersInterface::check_status));
static_assert(is_of_type<unsigned int (TaskParametersInterface::*)() const>(
    &TaskParametersInterface::get_timeout));
static_assert(is_of_type<unsigned int (TaskParametersInterface::*)() const>(
    &TaskParametersInterface::get_defer_time));

/// All that parameters of one's own have to define.
class Report : public TaskParametersInterface {
public:
    TaskParametersInterface* clone() const override { return new Report(*this); }
    int get_type() const override { return 1; }
    int check_status() override { return 1; }
};

[[maybe_unused]] void ask_a_task() {
    Report report;
    int context = 0;
    ExecutorInterface::Task task(task_forwarder, &context, &report);
    task.set_deferring();
    const bool held_back = task.deferring();
    const bool waited_long_enough = task.timed_out();
    const task_functor func = task.func;
    void* const given = task.context;
    TaskParametersInterface* const params = task.params;
    if (held_back && waited_long_enough) {
        func(given, params);
    }
}

// The executor.

static_assert(std::is_abstract_v<ExecutorInterface>);
static_assert(!std::has_virtual_destructor_v<ExecutorInterface>);
static_assert(std::is_base_of_v<ExecutorInterface, ExecutorImpl>);
static_assert(std::is_base_of_v<vix::Thread, ExecutorImpl>);
static_assert(std::has_virtual_destructor_v<ExecutorImpl>);
static_assert(std::is_constructible_v<ExecutorImpl, log::HostLogInterface*>);

[[maybe_unused]] void use_an_executor(log::HostLogInterface* log_sink) {
    ExecutorImpl made(log_sink);
    ExecutorInterface& executor = made;
    Report report;
    executor.add_task(task_forwarder, nullptr, &report);
    made.requeue(ExecutorInterface::Task(task_forwarder, nullptr, nullptr));
    const bool deferring = made.tasks_deferring();
    made.debug(std::string(deferring ? "held back" : "a line"));
    if (made.threadLoop() && made.run("Headset-mgmt task thread", 0, 0) && made.requestExit()) {
        made.join();
    }
}

}  // namespace
}  // namespace headsetmgmt
