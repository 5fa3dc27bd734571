// Something that one thread waits for and another tells.

#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace headsetmgmt::test_support {

/// Happens at most once. Any thread.
class Event {
public:
    void happen() {
        const std::lock_guard<std::mutex> lock(mutex);
        happened = true;
        told.notify_all();  // with the lock: who was waiting may delete the event at once
    }

    /// Waits for it, 20 seconds at most; whether it happened.
    bool wait() {
        std::unique_lock<std::mutex> lock(mutex);
        return told.wait_for(lock, std::chrono::seconds(20), [this] { return happened; });
    }

private:
    std::mutex mutex;
    std::condition_variable told;
    bool happened = false;
};

}  // namespace headsetmgmt::test_support
