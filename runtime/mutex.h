// POSIX mutexes, and the factory that hands them to the core.

#pragma once

#include <memory>
#include <pthread.h>

#include "headsetmgmt/mutex.h"

namespace vix {

/// A POSIX mutex. Fits `std::lock_guard<vix::Mutex>`. Any thread.
class Mutex {
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
    bool lock() { return pthread_mutex_lock(&mutex) == 0; }
    void unlock() { pthread_mutex_unlock(&mutex); }

    /// Takes the mutex if that needs no waiting.
    bool tryLock() { return pthread_mutex_trylock(&mutex) == 0; }

private:
    pthread_mutex_t mutex = {};
};

}  // namespace vix

namespace headsetmgmt {

/// A lock of the core on a POSIX mutex. Any thread.
class MutexImpl : public MutexInterface {
public:
    explicit MutexImpl(bool recursive);

    bool lock() override;
    void unlock() override;

    /// Takes the lock if that needs no waiting. Not for the core, which knows the interface alone.
    bool tryLock();

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
