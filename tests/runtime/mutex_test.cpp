// SPDX-License-Identifier: Apache-2.0
// POSIX mutexes, and the factory that hands them to the core.

#include <cerrno>
#include <future>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <thread>

#include <gtest/gtest.h>

#include "runtime/mutex.h"
#include "support/failing_pthread.h"

namespace headsetmgmt {
namespace {

using test_support::latest_mutex_kind;
using test_support::PthreadAnswer;
using test_support::PthreadCall;

/// Whether another thread could take the mutex right now.
template <typename Mutex>
bool free_for_others(Mutex& mutex) {
    return std::async(std::launch::async,
                      [&] {
                          const bool taken = mutex.tryLock();
                          if (taken) {
                              mutex.unlock();
                          }
                          return taken;
                      })
        .get();
}

TEST(MutexTest, LockReturnsTrueAndShutsOthersOut) {
    vix::Mutex mutex;

    EXPECT_TRUE(mutex.lock());

    EXPECT_FALSE(free_for_others(mutex));
    mutex.unlock();
}

TEST(MutexTest, UnlockLetsOthersIn) {
    vix::Mutex mutex;
    mutex.lock();

    mutex.unlock();

    EXPECT_TRUE(free_for_others(mutex));
}

TEST(MutexTest, TryLockTakesAFreeMutex) {
    vix::Mutex mutex;

    EXPECT_TRUE(mutex.tryLock());

    EXPECT_FALSE(free_for_others(mutex));
    mutex.unlock();
}

TEST(MutexTest, DefaultMutexIsNotRecursive) {
    vix::Mutex mutex;
    mutex.lock();

    EXPECT_FALSE(mutex.tryLock());

    mutex.unlock();
}

TEST(MutexTest, RecursiveMutexIsFreeAfterAsManyUnlocksAsLocks) {
    vix::Mutex mutex(true);
    EXPECT_TRUE(mutex.lock());
    ASSERT_TRUE(mutex.tryLock());
    EXPECT_TRUE(mutex.lock());

    mutex.unlock();
    mutex.unlock();
    EXPECT_FALSE(free_for_others(mutex));
    mutex.unlock();
    EXPECT_TRUE(free_for_others(mutex));
}

TEST(MutexTest, MutexThatIsMadeAnewIsOfTheKindAskedForThen) {
    vix::Mutex mutex;

    mutex.initialize(true);

    EXPECT_TRUE(mutex.lock());
    ASSERT_TRUE(mutex.tryLock());
    mutex.unlock();
    mutex.unlock();
}

TEST(MutexTest, PlainMutexIsOfTheSystemsDefaultKind) {
    const vix::Mutex recursive(true);
    ASSERT_EQ(latest_mutex_kind(), PTHREAD_MUTEX_RECURSIVE);

    const vix::Mutex plain;

    EXPECT_EQ(latest_mutex_kind(), PTHREAD_MUTEX_DEFAULT);
}

TEST(MutexTest, OneThreadAtATimeIsInside) {
    vix::Mutex mutex;
    int counter = 0;  // not atomic: the mutex is what makes this right
    const auto count = [&] {
        for (int round = 0; round < 1000; ++round) {
            const std::lock_guard<vix::Mutex> lock(mutex);
            ++counter;
        }
    };

    std::thread other(count);
    count();
    other.join();

    EXPECT_EQ(counter, 2000);
}

TEST(MutexTest, FailedInitialisationLeavesAPlainMutex) {
    const PthreadAnswer out_of_memory(PthreadCall::mutex_init, ENOMEM);

    vix::Mutex mutex(false);

    EXPECT_TRUE(out_of_memory.given());
    EXPECT_TRUE(mutex.lock());
    EXPECT_FALSE(free_for_others(mutex));
    mutex.unlock();
    EXPECT_TRUE(free_for_others(mutex));
}

TEST(MutexTest, FailedRecursiveInitialisationLeavesAPlainMutex) {
    const PthreadAnswer out_of_memory(PthreadCall::mutex_init, ENOMEM);

    vix::Mutex mutex(true);

    EXPECT_TRUE(out_of_memory.given());
    EXPECT_TRUE(mutex.lock());
    EXPECT_FALSE(mutex.tryLock());
    mutex.unlock();
}

TEST(MutexTest, FailedInitialisationLeavesNothingOfAnEarlierOne) {
    vix::Mutex mutex(true);
    const PthreadAnswer out_of_memory(PthreadCall::mutex_init, ENOMEM);

    mutex.initialize(false);

    EXPECT_TRUE(out_of_memory.given());
    EXPECT_TRUE(mutex.lock());
    EXPECT_FALSE(mutex.tryLock()) << "not recursive any more";
    mutex.unlock();
}

TEST(MutexTest, MissingAttributesLeaveAPlainMutex) {
    const PthreadAnswer out_of_memory(PthreadCall::mutexattr_init, ENOMEM);

    vix::Mutex mutex(true);

    EXPECT_TRUE(out_of_memory.given());
    EXPECT_TRUE(mutex.lock());
    EXPECT_FALSE(mutex.tryLock());
    mutex.unlock();
}

TEST(MutexImplTest, PlainLockIsTakenOnce) {
    MutexImpl mutex(false);
    EXPECT_TRUE(mutex.lock());

    EXPECT_FALSE(mutex.tryLock());

    mutex.unlock();
    EXPECT_TRUE(free_for_others(mutex));
}

TEST(MutexImplTest, RecursiveLockIsTakenTwiceAndReleasedTwice) {
    MutexImpl mutex(true);
    EXPECT_TRUE(mutex.lock());
    ASSERT_TRUE(mutex.tryLock());

    mutex.unlock();
    EXPECT_FALSE(free_for_others(mutex));
    mutex.unlock();
    EXPECT_TRUE(free_for_others(mutex));
}

TEST(MutexImplTest, PlainLockIsOfTheSystemsDefaultKind) {
    const MutexImpl recursive(true);
    ASSERT_EQ(latest_mutex_kind(), PTHREAD_MUTEX_RECURSIVE);

    const MutexImpl plain(false);

    EXPECT_EQ(latest_mutex_kind(), PTHREAD_MUTEX_DEFAULT);
}

TEST(MutexImplTest, InterfaceFitsLockGuard) {
    MutexImpl mutex(false);
    {
        const std::lock_guard<MutexInterface> lock(mutex);
        EXPECT_FALSE(free_for_others(mutex));
    }
    EXPECT_TRUE(free_for_others(mutex));
}

TEST(MutexFactoryImplTest, MakesPlainLocks) {
    MutexFactoryImpl factory;

    MutexInterface* made = factory.create_mutex(false);

    auto* mutex = dynamic_cast<MutexImpl*>(made);
    ASSERT_NE(mutex, nullptr);
    EXPECT_TRUE(mutex->lock());
    EXPECT_FALSE(mutex->tryLock());
    mutex->unlock();
    factory.delete_mutex(made);
}

TEST(MutexFactoryImplTest, MakesRecursiveLocks) {
    MutexFactoryImpl factory;

    MutexInterface* made = factory.create_mutex(true);

    EXPECT_TRUE(made->lock());
    ASSERT_TRUE(dynamic_cast<MutexImpl&>(*made).tryLock());
    made->unlock();
    made->unlock();
    factory.delete_mutex(made);
}

TEST(MutexFactoryImplTest, LocksAreIndependent) {
    MutexFactoryImpl factory;
    MutexInterface* held = factory.create_mutex(false);
    MutexInterface* other = factory.create_mutex(false);
    held->lock();

    EXPECT_TRUE(free_for_others(dynamic_cast<MutexImpl&>(*other)));

    held->unlock();
    factory.delete_mutex(held);
    factory.delete_mutex(other);
}

TEST(MutexFactoryImplTest, DeletingNoLockDoesNothing) {
    MutexFactoryImpl factory;

    EXPECT_NO_THROW(factory.delete_mutex(nullptr));
}

TEST(MutexFactoryImplTest, DeletesALockByItsOwnDestructor) {
    class ToldMutex : public MutexImpl {
    public:
        explicit ToldMutex(bool& gone) : MutexImpl(false), deleted(gone) {}
        ~ToldMutex() override { deleted = true; }

    private:
        bool& deleted;
    };
    MutexFactoryImpl factory;
    bool deleted = false;

    factory.delete_mutex(new ToldMutex(deleted));

    EXPECT_TRUE(deleted);
}

}  // namespace
}  // namespace headsetmgmt
