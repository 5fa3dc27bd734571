// SPDX-License-Identifier: Apache-2.0
// Where the threads that call the library meet and wait, so that nothing is under way.

#include "stress/meeting.h"

namespace headsetmgmt::stress {

void Meeting::convene() {
    std::unique_lock<std::mutex> lock(mutex);
    convened = true;
    changed.wait(lock, [this] { return present == expected; });
}

void Meeting::dismiss() {
    std::unique_lock<std::mutex> lock(mutex);
    convened = false;
    changed.notify_all();
    changed.wait(lock, [this] { return present == 0; });
}

void Meeting::attend() {
    // Relaxed: a look that finds nothing must not put the threads into an order.
    if (!convened.load(std::memory_order_relaxed)) {
        return;
    }
    std::unique_lock<std::mutex> lock(mutex);
    ++present;
    changed.notify_all();
    changed.wait(lock, [this] { return !convened; });
    --present;
    changed.notify_all();
}

}  // namespace headsetmgmt::stress
