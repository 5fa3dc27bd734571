// SPDX-License-Identifier: Apache-2.0
// Finds out that a thread waits for another one's end.

#include "support/joining_thread.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <dlfcn.h>
#include <mutex>
#include <vector>

namespace headsetmgmt::test_support {

namespace {

/// Never deleted: threads are joined until the program ends.
struct JoiningThreads {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<pthread_t> threads;

    auto find(pthread_t thread) {
        return std::find_if(threads.begin(), threads.end(), [thread](pthread_t joining) {
            return pthread_equal(joining, thread) != 0;
        });
    }
};

JoiningThreads& joining_threads() {
    static auto* joining = new JoiningThreads;
    return *joining;
}

/// Lists the calling thread for as long as this lives.
class Listed {
public:
    Listed() {
        JoiningThreads& joining = joining_threads();
        const std::lock_guard<std::mutex> lock(joining.mutex);
        joining.threads.push_back(pthread_self());
        joining.changed.notify_all();
    }
    ~Listed() {
        JoiningThreads& joining = joining_threads();
        const std::lock_guard<std::mutex> lock(joining.mutex);
        joining.threads.erase(joining.find(pthread_self()));
    }

    Listed(const Listed&) = delete;
    Listed& operator=(const Listed&) = delete;
};

}  // namespace

bool wait_until_joining(pthread_t thread) {
    JoiningThreads& joining = joining_threads();
    std::unique_lock<std::mutex> lock(joining.mutex);
    return joining.changed.wait_for(lock, std::chrono::seconds(20),
                                    [&] { return joining.find(thread) != joining.threads.end(); });
}

}  // namespace headsetmgmt::test_support

extern "C" __attribute__((visibility("default"))) int pthread_join(pthread_t thread,
                                                                   void** result) {
    static const auto next =
        reinterpret_cast<decltype(&pthread_join)>(dlsym(RTLD_NEXT, "pthread_join"));
    const headsetmgmt::test_support::Listed listed;
    return next(thread, result);
}
