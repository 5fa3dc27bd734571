// SPDX-License-Identifier: Apache-2.0
// POSIX mutexes and their factory.

#include "runtime/mutex.h"

namespace vix {

Mutex::~Mutex() {
    pthread_mutex_destroy(&mutex);
}

void Mutex::initialize(bool recursive) {
    int result = 0;
    if (recursive) {
        pthread_mutexattr_t attributes;
        result = pthread_mutexattr_init(&attributes);
        if (result == 0) {
            pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
            result = pthread_mutex_init(&mutex, &attributes);
            pthread_mutexattr_destroy(&attributes);
        }
    } else {
        result = pthread_mutex_init(&mutex, nullptr);
    }
    if (result != 0) {
        mutex = pthread_mutex_t{};
    }
}

}  // namespace vix

namespace headsetmgmt {

MutexImpl::MutexImpl(bool recursive) : mutex(std::make_unique<vix::Mutex>(recursive)) {}

bool MutexImpl::lock() {
    return mutex->lock();
}

void MutexImpl::unlock() {
    mutex->unlock();
}

bool MutexImpl::tryLock() {
    return mutex->tryLock();
}

MutexInterface* MutexFactoryImpl::create_mutex(bool recursive) {
    return new MutexImpl(recursive);
}

void MutexFactoryImpl::delete_mutex(MutexInterface* mutex) {
    delete mutex;
}

}  // namespace headsetmgmt
