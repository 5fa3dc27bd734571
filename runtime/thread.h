// SPDX-License-Identifier: Apache-2.0
// A POSIX thread that repeats its subclass's loop body until an exit is requested.

#pragma once

#include <atomic>
#include <cstdint>
#include <pthread.h>
#include <string>

#include "runtime/mutex.h"

namespace vix {

/// Options of `Thread::run`; flags may be combined.
enum ThreadFlags : std::uint32_t {
    THREAD_FLAG_REALTIME = 1,     ///< round-robin real-time scheduling, if the process may
    THREAD_FLAG_DETACHED = 2,     ///< the thread cannot be joined
    THREAD_FLAG_AUTO_DELETE = 4,  ///< the object deletes itself when its thread ends
};

/// One thread. Before deleting the object, its owner requests the exit and joins the thread; the
/// destructor does neither.
class Thread {
public:
    Thread() = default;
    virtual ~Thread();

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Starts the thread with the given name (null: "workerthread"; the system keeps 15 characters)
    /// and `ThreadFlags`; `wanted_priority` is for real-time scheduling only. False when the system
    /// could not; throws `std::bad_alloc` when there is no memory for the name. Not while the
    /// thread runs.
    bool run(const char* name, std::uint32_t wanted_flags, std::uint32_t wanted_priority);

    /// Requests that the thread ends after the current loop body. Without effect, also on a later
    /// run, when it is not running. Always true. Any thread.
    bool requestExit();

    /// Waits until the thread has ended; false when it was never started, was detached or joined,
    /// or is the caller's own. The object may delete itself meanwhile. Any thread.
    bool join();

    /// Detaches the thread, which then cannot be joined; false when it was never started, or was
    /// detached or joined. Any thread.
    bool detach();

    /// Whether the loop is running. Any thread.
    bool running();

    /// Entry point of the new thread: sets name and scheduling of the `Thread` that `thread` points
    /// to, and runs its loop. Does nothing for null. Returns null.
    static void* staticThreadEntryPoint(void* thread);

    /// Runs the loop on the calling thread, until the body returns false or an exit is requested.
    /// Then deletes the object if the latest run had `THREAD_FLAG_AUTO_DELETE`.
    void threadEntryPoint();

protected:
    /// One round of the thread's work; false ends the thread.
    virtual bool threadLoop() = 0;

    /// Whether an exit was requested, for bodies that can stop early. Any thread.
    bool exit_requested() const { return exit_request; }

    /// Flags of the latest run, less `THREAD_FLAG_REALTIME` if that was refused. Any thread.
    std::uint32_t run_flags();

private:
    void switch_to_realtime();
    bool exit_is_due() const REQUIRES(state_mutex) { return exit_request; }

    pthread_t handle GUARDED_BY(state_mutex) = 0;
    Mutex state_mutex;
    // Written under the mutex; bodies that can stop early read it without.
    std::atomic<bool> exit_request{false};
    bool is_running GUARDED_BY(state_mutex) = false;
    std::string thread_name;
    std::uint32_t flags GUARDED_BY(state_mutex) = 0;
    std::uint32_t priority = 0;
};

}  // namespace vix
