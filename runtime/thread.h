// A POSIX thread that runs the body of its subclass again and again until it is asked to leave.

#pragma once

#include <atomic>
#include <cstdint>
#include <pthread.h>
#include <string>

#include "runtime/mutex.h"

namespace vix {

/// What `Thread::run` is asked for; flags may be combined.
enum ThreadFlags : std::uint32_t {
    THREAD_FLAG_REALTIME = 1,     ///< round-robin real-time scheduling, if the process may
    THREAD_FLAG_DETACHED = 2,     ///< nobody will join the thread
    THREAD_FLAG_AUTO_DELETE = 4,  ///< the object deletes itself when its thread ends
};

/// One thread. Its owner asks it to exit and joins it before deleting the object; the destructor
/// does neither.
class Thread {
public:
    Thread() = default;
    virtual ~Thread();

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Starts the thread under `name` (null: "workerthread"; the system keeps 15 characters), with
    /// `wanted_flags` of `ThreadFlags`; `wanted_priority` matters for real-time scheduling alone.
    /// False when the system could not; throws `std::bad_alloc` when there is no room for the name.
    /// Not while the thread runs.
    bool run(const char* name, std::uint32_t wanted_flags, std::uint32_t wanted_priority);

    /// Asks the thread to leave after the body that it is in. Does nothing, not even for a later
    /// run, when it is not running. Always true. Any thread.
    bool requestExit();

    /// Waits for the thread's end; false when there is none to wait for: never started, detached,
    /// joined already, or the caller's own. The object may delete itself meanwhile. Any thread.
    bool join();

    /// Lets the thread end on its own; false when there is none, as for `join`. Any thread.
    bool detach();

    /// Whether the loop is under way. Any thread.
    bool running();

    /// What `run` has its new thread do: takes the name and the scheduling of the `Thread` that
    /// `thread` points to, and makes its loop. Null: does nothing. Always null.
    static void* staticThreadEntryPoint(void* thread);

    /// The loop, made on the calling thread: the body again and again until it answers false or the
    /// thread was asked to leave. Deletes the object if the latest run asked for that.
    void threadEntryPoint();

protected:
    /// One round of the thread's work; false ends the thread.
    virtual bool threadLoop() = 0;

    /// Whether somebody asked the thread to leave, for bodies that can stop half way. Any thread.
    bool exit_requested() const { return exit_request; }

    /// Flags of the latest run, less `THREAD_FLAG_REALTIME` if that was refused. Any thread.
    std::uint32_t run_flags();

private:
    void switch_to_realtime();
    bool exit_is_due() const REQUIRES(state_mutex) { return exit_request; }

    pthread_t handle GUARDED_BY(state_mutex) = 0;
    Mutex state_mutex;
    // Written under the mutex. Read without it, too, by bodies that can stop half way.
    std::atomic<bool> exit_request{false};
    bool is_running GUARDED_BY(state_mutex) = false;
    std::string thread_name;
    std::uint32_t flags GUARDED_BY(state_mutex) = 0;
    std::uint32_t priority = 0;
};

}  // namespace vix
