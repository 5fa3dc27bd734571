// The locks that the core uses, and the factory that makes them.

#pragma once

namespace headsetmgmt {

/// One lock. It fits `std::lock_guard<MutexInterface>`; trying a lock is not part of it, so the
/// core never does.
class MutexInterface {
public:
    virtual ~MutexInterface() = default;

    /// Waits for the lock and takes it; false when the system could not. Any thread.
    virtual bool lock() = 0;

    /// Gives the lock back. The thread that holds it.
    virtual void unlock() = 0;
};

/// Makes the locks of the core.
///
/// Any thread. Made and deleted by the plug-in; everyone else borrows it through `Plugins`.
class MutexFactoryInterface {
public:
    virtual ~MutexFactoryInterface() = default;

    /// A new lock, which one thread may take several times over when it is `recursive`. The caller
    /// owns it and hands it back with `delete_mutex`.
    virtual MutexInterface* create_mutex(bool recursive) = 0;

    /// Deletes a lock of this factory; null is ignored.
    virtual void delete_mutex(MutexInterface* mutex) = 0;
};

}  // namespace headsetmgmt
