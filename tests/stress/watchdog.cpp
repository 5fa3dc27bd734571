// SPDX-License-Identifier: Apache-2.0
// Notices a call that does not come back.

#include "stress/watchdog.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <pthread.h>

#include "stress/thread_stacks.h"

namespace headsetmgmt::stress {

namespace {

using Clock = std::chrono::steady_clock;

/// The outermost call of one thread. Only the watchdog acquires what threads release here, so being
/// watched puts them into no order among themselves, which would hide races.
struct Entry {
    std::atomic<const char*> function{nullptr};  // null: none under way
    std::atomic<Clock::rep> since{0};
};

std::array<Entry, 16> entries;
std::atomic<std::size_t> entries_given{0};

thread_local Entry* entry_of_thread = nullptr;
thread_local int depth = 0;

/// The function that has been under way for too long; null when there is none.
const char* find_hanging_call() {
    for (const Entry& entry : entries) {
        const char* const function = entry.function.load(std::memory_order_acquire);
        const Clock::time_point since(Clock::duration(entry.since.load(std::memory_order_relaxed)));
        if (function != nullptr && Clock::now() - since > patience) {
            return function;
        }
    }
    return nullptr;
}

}  // namespace

void give_up(const char* what) {
    static std::mutex only_one;
    const std::lock_guard<std::mutex> only_one_lock(only_one);
    std::fprintf(stderr, "stress: %s has not come to its end within %d seconds\n", what,
                 static_cast<int>(patience.count()));
    print_all_stacks();
    std::fputs("stress: FAILED\n", stderr);
    std::abort();
}

void watch_this_thread() {
    entry_of_thread = &entries.at(entries_given.fetch_add(1, std::memory_order_relaxed));
}

bool is_watched() {
    return entry_of_thread != nullptr;
}

WatchedCall::WatchedCall(const char* name) {
    if (++depth == 1 && entry_of_thread != nullptr) {
        // The name last: beside the time of an earlier call it would look like a call that hangs.
        entry_of_thread->since.store(Clock::now().time_since_epoch().count(),
                                     std::memory_order_relaxed);
        entry_of_thread->function.store(name, std::memory_order_release);
    }
}

WatchedCall::~WatchedCall() {
    if (--depth == 0 && entry_of_thread != nullptr) {
        entry_of_thread->function.store(nullptr, std::memory_order_release);
    }
}

Watchdog::Watchdog()
    : thread([this] {
          pthread_setname_np(pthread_self(), "watchdog");
          while (!leaving) {
              std::this_thread::sleep_for(std::chrono::milliseconds(100));
              if (const char* const function = find_hanging_call()) {
                  give_up(function);
              }
          }
      }) {}

Watchdog::~Watchdog() {
    leaving = true;
    thread.join();
}

}  // namespace headsetmgmt::stress
