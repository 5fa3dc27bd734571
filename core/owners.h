// Owners of locks and loggers.

#pragma once

#include <memory>
#include <string>

#include "headsetmgmt/log.h"
#include "headsetmgmt/mutex.h"
#include "headsetmgmt/plugins.h"

namespace headsetmgmt {

struct MutexDeleter {
    void operator()(MutexInterface* mutex) const {
        globals::plugins.mutex_factory->delete_mutex(mutex);
    }
};

struct LoggerDeleter {
    void operator()(log::Logger* logger) const { delete_logger(logger); }
};

using MutexOwner = std::unique_ptr<MutexInterface, MutexDeleter>;
using LoggerOwner = std::unique_ptr<log::Logger, LoggerDeleter>;

/// A lock from the plug-in record's factory.
inline MutexOwner make_mutex(bool recursive) {
    return MutexOwner(globals::plugins.mutex_factory->create_mutex(recursive));
}

/// A logger of the component `name` that writes to the plug-in record's log sink.
inline LoggerOwner make_logger(const std::string& name) {
    return LoggerOwner(create_logger(globals::plugins.log, name, true));
}

}  // namespace headsetmgmt
