// SPDX-License-Identifier: Apache-2.0
// The library's worker, whose pauses between two passes last until a benchmark wants the next pass.

#include "benchmarks/resting_worker.h"

#include <condition_variable>
#include <mutex>
#include <unistd.h>

#include "benchmarks/processor_time.h"

namespace headsetmgmt::benchmarks {

namespace {

std::mutex bed_mutex;  // guards all below
std::condition_variable bed_changed;
bool resting = false;
bool wake_requested = false;
bool awake_for_good = false;
std::function<void()> body_to_run;
double woken = 0;       // the worker's processor time when it went on,
double rest_began = 0;  // and when it came to rest

using BedLock = std::unique_lock<std::mutex>;

void rest() {
    const double now = processor_seconds();
    BedLock lock(bed_mutex);
    rest_began = now;
    resting = true;
    bed_changed.notify_all();
    while (!wake_requested && !awake_for_good) {
        if (body_to_run) {
            body_to_run();
            body_to_run = nullptr;
            bed_changed.notify_all();
        }
        bed_changed.wait(lock);
    }
    resting = false;
    wake_requested = false;
    woken = processor_seconds();
}

void wait_for_rest(BedLock& lock) {
    bed_changed.wait(lock, [] { return resting && !wake_requested; });
}

}  // namespace

void let_worker_rest() {
    const BedLock lock(bed_mutex);
    awake_for_good = false;
}

void wait_for_worker() {
    BedLock lock(bed_mutex);
    wait_for_rest(lock);
}

double run_worker() {
    BedLock lock(bed_mutex);
    wait_for_rest(lock);
    wake_requested = true;
    bed_changed.notify_all();
    wait_for_rest(lock);
    return rest_began - woken;
}

void run_on_worker(const std::function<void()>& body) {
    BedLock lock(bed_mutex);
    wait_for_rest(lock);
    body_to_run = body;
    bed_changed.notify_all();
    bed_changed.wait(lock, [] { return !body_to_run; });
}

void wake_worker_for_good() {
    const BedLock lock(bed_mutex);
    awake_for_good = true;
    bed_changed.notify_all();
}

}  // namespace headsetmgmt::benchmarks

extern "C" int usleep(useconds_t /*duration*/) {
    headsetmgmt::benchmarks::rest();
    return 0;
}
