// SPDX-License-Identifier: Apache-2.0
// Owners of locks and loggers.

#pragma once

#include <memory>
#include <string>

#include "headsetmgmt/log.h"
#include "headsetmgmt/mutex.h"
#include "headsetmgmt/plugins.h"

#include "core/thread_annotations.h"

namespace headsetmgmt {

struct MutexDeleter {
    void operator()(MutexInterface* mutex) const {
        globals::plugins.mutex_factory->delete_mutex(mutex);
    }
};

struct LoggerDeleter {
    void operator()(log::Logger* logger) const { delete_logger(logger); }
};

using LoggerOwner = std::unique_ptr<log::Logger, LoggerDeleter>;

/// Owns a lock from the plug-in record's factory, and is that lock. Empty at first.
class CAPABILITY("mutex") MutexOwner {
public:
    MutexOwner() = default;
    explicit MutexOwner(MutexInterface* made) : mutex(made) {}

    void lock() ACQUIRE() { mutex->lock(); }
    void unlock() RELEASE() { mutex->unlock(); }
    void reset() { mutex.reset(); }

private:
    std::unique_ptr<MutexInterface, MutexDeleter> mutex;
};

/// A lock from the plug-in record's factory.
inline MutexOwner make_mutex(bool recursive) {
    return MutexOwner(globals::plugins.mutex_factory->create_mutex(recursive));
}

/// A logger of the component `name` that writes to the plug-in record's log sink.
inline LoggerOwner make_logger(const std::string& name) {
    return LoggerOwner(create_logger(globals::plugins.log, name, true));
}

}  // namespace headsetmgmt
