// SPDX-License-Identifier: Apache-2.0
// Notices a call that does not come back.

#pragma once

#include <atomic>
#include <chrono>
#include <thread>

namespace headsetmgmt::stress {

/// How long anything may take that does not hang; sanitizers make everything slow.
#ifdef STRESS_WITH_SANITIZERS
constexpr std::chrono::seconds patience(90);
#else
constexpr std::chrono::seconds patience(20);
#endif

/// Reports what hangs, prints the stacks of all threads and aborts.
[[noreturn]] void give_up(const char* what);

/// From now on the calling thread's calls are looked after. For at most 16 threads.
void watch_this_thread();

/// Whether the calling thread is one of them.
bool is_watched();

/// Marks the calling thread as inside the function `name`, a text that stays, for its own lifetime.
/// The outermost mark of a thread counts.
class WatchedCall {
public:
    explicit WatchedCall(const char* name);
    ~WatchedCall();

    WatchedCall(const WatchedCall&) = delete;
    WatchedCall& operator=(const WatchedCall&) = delete;
};

/// Looks after the marked calls on a thread of its own, and gives up when one of them takes longer
/// than `patience`.
class Watchdog {
public:
    Watchdog();
    ~Watchdog();

    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    std::atomic<bool> leaving{false};
    std::thread thread;
};

}  // namespace headsetmgmt::stress
