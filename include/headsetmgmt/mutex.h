// SPDX-License-Identifier: Apache-2.0
// The core's locks and their factory.

#pragma once

namespace headsetmgmt {

/// One lock. `std::lock_guard<MutexInterface>` can hold it. There is no operation to try the lock.
class MutexInterface {
public:
    virtual ~MutexInterface() = default;

    /// Waits for the lock and takes it; false when the system could not. Any thread.
    virtual bool lock() = 0;

    /// Releases the lock. Only the thread that holds it.
    virtual void unlock() = 0;
};

/// Makes the locks of the core.
///
/// Any thread. Made and deleted by the plug-in; everyone else borrows it through `Plugins`.
class MutexFactoryInterface {
public:
    virtual ~MutexFactoryInterface() = default;

    /// Makes a lock; one thread may take a `recursive` one several times. The caller owns it and
    /// deletes it with `delete_mutex`.
    virtual MutexInterface* create_mutex(bool recursive) = 0;

    /// Deletes a lock of this factory; null is ignored.
    virtual void delete_mutex(MutexInterface* mutex) = 0;
};

}  // namespace headsetmgmt
