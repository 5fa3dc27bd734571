// POSIX mutexes, and the factory that hands them to the core.

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

    /// Makes the mutex anew, of another kind perhaps; the constructors have done so already. Nobody
    /// holds it or waits for it. One that the system cannot make is left zero-filled, and no error
    /// is reported.
    void initialize(bool recursive);

    /// False when the system could not.
    bool lock() ACQUIRE() { return pthread_mutex_lock(&mutex) == 0; }
    void unlock() RELEASE() { pthread_mutex_unlock(&mutex); }

    /// Takes the mutex if that needs no waiting.
    bool tryLock() TRY_ACQUIRE(true) { return pthread_mutex_trylock(&mutex) == 0; }

private:
    pthread_mutex_t mutex = {};
};

}  // namespace vix

namespace headsetmgmt {

/// A lock of the core on a POSIX mutex. Any thread.
class MutexImpl : public MutexInterface {
public:
    explicit MutexImpl(bool recursive);

    bool lock() override ACQUIRE(*mutex);
    void unlock() override RELEASE(*mutex);

    /// Takes the lock if that needs no waiting. Not for the core, which knows the interface alone.
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
