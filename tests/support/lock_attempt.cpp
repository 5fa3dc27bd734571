// SPDX-License-Identifier: Apache-2.0
// Runs code at the moment at which a lock is tried.

#include "support/lock_attempt.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <memory>
#include <pthread.h>
#include <utility>

namespace headsetmgmt::test_support {

namespace {

struct Plan {
    std::function<void()> act;
    bool finds_it_busy;
};

/// What is planned for the next attempt on each kind of lock; null for none.
std::array<std::atomic<Plan*>, 3> plans;

/// Takes part in an attempt; whether it is to find the lock busy.
bool finds_it_busy(TriedLock lock) {
    const std::unique_ptr<Plan> plan(plans[static_cast<std::size_t>(lock)].exchange(nullptr));
    if (!plan) {
        return false;
    }
    plan->act();
    return plan->finds_it_busy;
}

}  // namespace

LockAttempt::LockAttempt(TriedLock kind, std::function<void()> act, bool finds_it_busy)
    : lock(kind) {
    plans[static_cast<std::size_t>(lock)] = new Plan{std::move(act), finds_it_busy};
}

LockAttempt::~LockAttempt() {
    delete plans[static_cast<std::size_t>(lock)].exchange(nullptr);
}

}  // namespace headsetmgmt::test_support

using headsetmgmt::test_support::finds_it_busy;
using headsetmgmt::test_support::TriedLock;

extern "C" __attribute__((visibility("default"))) int
pthread_rwlock_tryrdlock(pthread_rwlock_t* lock) noexcept {
    static const auto next = reinterpret_cast<decltype(&pthread_rwlock_tryrdlock)>(
        dlsym(RTLD_NEXT, "pthread_rwlock_tryrdlock"));
    return finds_it_busy(TriedLock::shared) ? EBUSY : next(lock);
}

extern "C" __attribute__((visibility("default"))) int
pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
    static const auto next = reinterpret_cast<decltype(&pthread_rwlock_wrlock)>(
        dlsym(RTLD_NEXT, "pthread_rwlock_wrlock"));
    finds_it_busy(TriedLock::exclusive);
    return next(lock);
}

extern "C" __attribute__((visibility("default"))) int
pthread_mutex_trylock(pthread_mutex_t* lock) noexcept {
    static const auto next = reinterpret_cast<decltype(&pthread_mutex_trylock)>(
        dlsym(RTLD_NEXT, "pthread_mutex_trylock"));
    return finds_it_busy(TriedLock::sole) ? EBUSY : next(lock);
}
