// SPDX-License-Identifier: Apache-2.0
// A POSIX thread that repeats its subclass's loop body until an exit is requested.

#include "runtime/thread.h"

#include <sched.h>
#include <sys/prctl.h>
#include <utility>

#include "core/locks.h"

namespace vix {

namespace {

using StateLock = headsetmgmt::ScopedLock<Mutex>;

/// Attributes of a new thread, destroyed at the end of the scope.
class ThreadAttributes {
public:
    ThreadAttributes() : valid(pthread_attr_init(&attributes) == 0) {}
    ~ThreadAttributes() {
        if (valid) {
            pthread_attr_destroy(&attributes);
        }
    }

    ThreadAttributes(const ThreadAttributes&) = delete;
    ThreadAttributes& operator=(const ThreadAttributes&) = delete;

    bool is_valid() const { return valid; }
    bool set_detached() {
        return pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED) == 0;
    }
    const pthread_attr_t* get() const { return &attributes; }

private:
    pthread_attr_t attributes;
    bool valid;
};

}  // namespace

Thread::~Thread() {
    const StateLock state_lock(state_mutex);  // waits for the last holder
}

bool Thread::run(const char* name, std::uint32_t wanted_flags, std::uint32_t wanted_priority) {
    // Held until `is_running` is set: the thread takes this mutex before it clears it.
    const StateLock state_lock(state_mutex);
    thread_name = name != nullptr ? name : "workerthread";
    flags = wanted_flags;
    priority = wanted_priority;
    handle = 0;

    ThreadAttributes attributes;
    if (!attributes.is_valid()) {
        return false;
    }
    const bool detached = (flags & THREAD_FLAG_DETACHED) != 0;
    if (detached && !attributes.set_detached()) {
        return false;
    }
    pthread_t created = 0;
    if (pthread_create(&created, attributes.get(), staticThreadEntryPoint, this) != 0) {
        return false;
    }
    // The handle of a detached thread may become invalid at any time.
    handle = detached ? 0 : created;
    is_running = true;
    return true;
}

bool Thread::requestExit() {
    const StateLock state_lock(state_mutex);
    if (is_running) {
        exit_request = true;
    }
    return true;
}

bool Thread::join() {
    pthread_t joined = 0;
    {
        const StateLock state_lock(state_mutex);
        // The system also refuses a thread that joins itself, but its owner still needs the handle.
        if (handle == 0 || pthread_equal(handle, pthread_self()) != 0) {
            return false;
        }
        joined = std::exchange(handle, 0);
    }
    // Without the mutex, which the thread needs in order to end. The object is not used after this:
    // it may have deleted itself.
    return pthread_join(joined, nullptr) == 0;
}

bool Thread::detach() {
    const StateLock state_lock(state_mutex);
    if (handle == 0 || pthread_detach(handle) != 0) {
        return false;
    }
    handle = 0;
    return true;
}

bool Thread::running() {
    const StateLock state_lock(state_mutex);
    return is_running;
}

std::uint32_t Thread::run_flags() {
    const StateLock state_lock(state_mutex);
    return flags;
}

// Without the mutex: `run`, which may hold it still, wrote name and flags before it made this
// thread.
void* Thread::staticThreadEntryPoint(void* thread) NO_THREAD_SAFETY_ANALYSIS {
    auto* self = static_cast<Thread*>(thread);
    if (self == nullptr) {
        return nullptr;
    }
    prctl(PR_SET_NAME, self->thread_name.c_str(), 0, 0, 0);
    if ((self->flags & THREAD_FLAG_REALTIME) != 0) {
        self->switch_to_realtime();
    }
    self->threadEntryPoint();
    return nullptr;
}

void Thread::switch_to_realtime() {
    int policy = 0;
    sched_param parameters = {};
    if (pthread_getschedparam(pthread_self(), &policy, &parameters) == 0) {
        parameters.sched_priority = static_cast<int>(priority);
        if (pthread_setschedparam(pthread_self(), SCHED_RR, &parameters) == 0) {
            return;
        }
    }
    const StateLock state_lock(state_mutex);
    flags &= ~static_cast<std::uint32_t>(THREAD_FLAG_REALTIME);
}

void Thread::threadEntryPoint() {
    bool go = false;
    {
        // Waits until `run` has set `is_running`.
        const StateLock state_lock(state_mutex);
        go = !exit_is_due();
    }
    while (go) {
        go = threadLoop();
        const StateLock state_lock(state_mutex);
        go = go && !exit_is_due();
    }

    bool auto_delete = false;
    {
        const StateLock state_lock(state_mutex);
        is_running = false;
        exit_request = false;
        auto_delete = (flags & THREAD_FLAG_AUTO_DELETE) != 0;
    }
    if (auto_delete) {
        delete this;
    }
}

}  // namespace vix
