// SPDX-License-Identifier: Apache-2.0
// POSIX mutexes and their factory.

#pragma once

#include <memory>
#include <pthread.h>

#include "headsetmgmt/mutex.h"

#include "core/thread_annotations.h"

namespace vix {

/// A POSIX mutex. Any thread.
class CAPABILITY("mutex") Mutex {
public:
    Mutex() : Mutex(false) {}

    explicit Mutex(bool recursive) { initialize(recursive); }
    ~Mutex();

    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    /// Makes the mutex again, possibly of the other kind. The constructors call it. No thread may
    /// hold or wait for the mutex. If the system fails, the mutex is zero-filled; no error is
    /// reported.
    void initialize(bool recursive);

    /// Waits for the mutex and takes it; false when the system could not, which counts as taken: no
    /// caller looks.
    bool lock() ACQUIRE() { return pthread_mutex_lock(&mutex) == 0; }
    void unlock() RELEASE() { pthread_mutex_unlock(&mutex); }

    /// Takes the mutex if it is free; whether it did.
    bool tryLock() TRY_ACQUIRE(true) { return pthread_mutex_trylock(&mutex) == 0; }

private:
    pthread_mutex_t mutex = {};
};

}  // namespace vix

namespace headsetmgmt {

/// The core's lock, on a POSIX mutex. Any thread.
class MutexImpl : public MutexInterface {
public:
    explicit MutexImpl(bool recursive);

    bool lock() override ACQUIRE(*mutex);
    void unlock() override RELEASE(*mutex);

    /// Takes the lock if it is free; whether it did. Not part of the interface, so not for the
    /// core.
    bool tryLock() TRY_ACQUIRE(true, *mutex);

private:
    std::unique_ptr<vix::Mutex> mutex;
};

/// Makes `MutexImpl`s. Any thread.
class MutexFactoryImpl : public MutexFactoryInterface {
public:
    MutexInterface* create_mutex(bool recursive) override;
    void delete_mutex(MutexInterface* mutex) override;
};

}  // namespace headsetmgmt
