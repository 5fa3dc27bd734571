// SPDX-License-Identifier: Apache-2.0
// Locks that clang can check (core/thread_annotations.h): a mutex, and the scope that holds any
// lock.

#pragma once

#include <mutex>

#include "core/thread_annotations.h"

namespace headsetmgmt {

/// `std::mutex`, marked as a lock. Any thread.
class CAPABILITY("mutex") Mutex {
public:
    Mutex() = default;

    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() ACQUIRE() { mutex.lock(); }
    bool try_lock() TRY_ACQUIRE(true) { return mutex.try_lock(); }
    void unlock() RELEASE() { mutex.unlock(); }

private:
    std::mutex mutex;
};

/// Holds a lock for the length of a scope.
template <typename Lock>
class SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(Lock& taken) ACQUIRE(taken) : lock(taken) { lock.lock(); }

    /// For a lock that the thread already holds.
    ScopedLock(Lock& held, std::adopt_lock_t /*adopt*/) REQUIRES(held) : lock(held) {}
    ~ScopedLock() RELEASE() { lock.unlock(); }

    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    Lock& lock;
};

}  // namespace headsetmgmt
