// SPDX-License-Identifier: Apache-2.0
// Runs code at the moment at which a lock is tried.
//
// A program that uses `LockAttempt` gets its own `pthread_rwlock_tryrdlock`,
// `pthread_rwlock_wrlock` and `pthread_mutex_trylock`, which pass every call on to the system's (or
// the sanitizer's) but for the one that is answered.

#pragma once

#include <functional>

namespace headsetmgmt::test_support {

/// What is tried.
enum class TriedLock {
    shared,     ///< a `std::shared_mutex`, by one of several, without waiting
    exclusive,  ///< a `std::shared_mutex`, by one alone, who waits for it
    sole,       ///< a `std::mutex`, without waiting
};

/// Runs `act` on the thread of the next attempt, by any thread, before the attempt; one without
/// waiting then finds the lock busy, if so asked. Attempts that `act` makes, and all later ones,
/// are the system's.
///
/// One for each kind of lock at a time.
class LockAttempt {
public:
    LockAttempt(TriedLock kind, std::function<void()> act, bool finds_it_busy = false);
    ~LockAttempt();

    LockAttempt(const LockAttempt&) = delete;
    LockAttempt& operator=(const LockAttempt&) = delete;

private:
    TriedLock lock;
};

}  // namespace headsetmgmt::test_support
