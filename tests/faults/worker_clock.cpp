// SPDX-License-Identifier: Apache-2.0
// The worker's pauses, begun and ended without an allocation.

#include "faults/worker_clock.h"

#include <condition_variable>
#include <ctime>
#include <mutex>
#include <sched.h>
#include <unistd.h>

namespace headsetmgmt::test_support {

namespace {

constexpr time_t standing_time = 1700000000;

std::mutex clock_mutex;  // guards all of the below
std::condition_variable changed;
bool held = false;
bool paused = false;
bool two_workers = false;
unsigned long turns = 0;

using ClockLock = std::unique_lock<std::mutex>;

void pause_worker() {
    ClockLock clock_lock(clock_mutex);
    if (!held) {
        clock_lock.unlock();
        sched_yield();
        return;
    }
    two_workers = two_workers || paused;
    paused = true;
    changed.notify_all();
    const unsigned long turn = turns;
    changed.wait(clock_lock, [turn] { return !held || turns != turn; });
    paused = false;
}

}  // namespace

void WorkerClock::hold() {
    const ClockLock clock_lock(clock_mutex);
    held = true;
}

void WorkerClock::wait_until_paused() {
    ClockLock clock_lock(clock_mutex);
    changed.wait(clock_lock, [] { return paused; });
}

void WorkerClock::run_worker() {
    ClockLock clock_lock(clock_mutex);
    ++turns;
    paused = false;
    changed.notify_all();
    changed.wait(clock_lock, [] { return paused; });
}

void WorkerClock::release() {
    const ClockLock clock_lock(clock_mutex);
    held = false;
    changed.notify_all();
}

bool WorkerClock::had_two_workers() {
    const ClockLock clock_lock(clock_mutex);
    return two_workers;
}

}  // namespace headsetmgmt::test_support

// The system's own names: the linker takes these for the whole program.
extern "C" {

__attribute__((visibility("default"))) int usleep(useconds_t) {
    headsetmgmt::test_support::pause_worker();
    return 0;
}

__attribute__((visibility("default"))) time_t time(time_t* result) noexcept {
    if (result != nullptr) {
        *result = headsetmgmt::test_support::standing_time;
    }
    return headsetmgmt::test_support::standing_time;
}

}  // extern "C"
