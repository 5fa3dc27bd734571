// SPDX-License-Identifier: Apache-2.0
// The threads that call the library, and what they do.

#include "stress/host_threads.h"

#include <cstddef>
#include <pthread.h>
#include <string>

#include "stress/dice.h"
#include "stress/random_calls.h"
#include "stress/watchdog.h"

namespace headsetmgmt::stress {

HostThreads::HostThreads() {
    for (int index = 0; index < number; ++index) {
        threads[static_cast<std::size_t>(index)] = std::thread([this, index] { run(index); });
    }
    their_meeting.convene();
}

HostThreads::~HostThreads() {
    leaving = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void HostThreads::run(int index) {
    pthread_setname_np(pthread_self(), ("host " + std::to_string(index + 1)).c_str());
    watch_this_thread();
    // Relaxed: a look that finds nothing must not put the threads into an order.
    while (!leaving.load(std::memory_order_relaxed)) {
        their_meeting.attend();
        if (starting_and_stopping.load(std::memory_order_relaxed) && dice().one_in(2)) {
            start_or_stop_at_random();
        } else {
            call_at_random();
        }
    }
}

}  // namespace headsetmgmt::stress
