// SPDX-License-Identifier: Apache-2.0
// A factory of working mutexes that counts locks and can fail at a chosen call.

#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "headsetmgmt/mutex.h"

#include "support/nth_call.h"

namespace headsetmgmt::test_support {

/// Makes real locks. It outlives its mutexes. Any thread.
class FakeMutexFactory : public MutexFactoryInterface {
public:
    /// What was asked for at each creation, in order.
    std::vector<bool> recursive_choices() const;

    std::size_t made() const;
    std::size_t deleted() const;

    /// Called after each unlock, on the same thread. Set it while no lock is used.
    std::function<void()> on_unlock;

    /// How many locks are held right now, one that is taken twice counting twice.
    int held() const;

    /// The same, of the calling thread alone: what a hook asks to see that no lock is held.
    int held_by_this_thread() const;

    /// Throws `std::runtime_error` "fake mutex factory" from the `n`th creation from now, 1 being
    /// the next.
    void throw_at_create(int n) { creation_fault.choose(n); }

    /// Throws `std::runtime_error` "fake mutex" from the `n`th lock from now, whichever mutex it
    /// is, which is then not taken.
    void throw_at_lock(int n) { lock_fault.choose(n); }

    MutexInterface* create_mutex(bool recursive) override;
    void delete_mutex(MutexInterface* mutex) override;

private:
    template <typename Lockable>
    class CountingMutex;

    void fail_lock_if_chosen();
    void count_held(int change);

    mutable std::mutex mutex;  // guards the counts
    std::vector<bool> choices;
    std::size_t deletions = 0;
    std::map<std::thread::id, int> holders;
    NthCall creation_fault;
    NthCall lock_fault;
};

}  // namespace headsetmgmt::test_support
