// SPDX-License-Identifier: Apache-2.0
// Something that one thread does and another waits for.

#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <unistd.h>

namespace headsetmgmt::test_support {

/// Happens at most once. Any thread.
class Event {
public:
    void happen() {
        const std::lock_guard<std::mutex> lock(mutex);
        happened = true;
        changed.notify_all();  // with the lock: who was waiting may delete the event at once
    }

    /// Waits for it, a minute at most. Returns whether it happened.
    bool wait() {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, std::chrono::minutes(1), [this] { return happened; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool happened = false;
};

/// For a thread of a process that another thread ends.
[[noreturn]] inline void wait_forever() {
    for (;;) {
        pause();
    }
}

}  // namespace headsetmgmt::test_support
