// SPDX-License-Identifier: Apache-2.0
// The plug-in record: the core's only access to the host.

#pragma once

#include "headsetmgmt/dispatcher.h"
#include "headsetmgmt/executor.h"
#include "headsetmgmt/export.h"
#include "headsetmgmt/host_config_driver.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/mutex.h"
#include "headsetmgmt/system_info.h"

namespace headsetmgmt {

/// The six interfaces through which the core reaches the host. The record does not own them:
/// whoever fills it makes and deletes them. They must exist for as long as the core is used.
struct Plugins {
    log::HostLogInterface* log = nullptr;
    dispatcher::DispatcherInterface* dispatcher = nullptr;
    config::HostConfigDriverInterface* config_driver = nullptr;
    SystemInfoInterface* system_info = nullptr;
    ExecutorInterface* executor = nullptr;
    MutexFactoryInterface* mutex_factory = nullptr;

    /// Whether all six are set.
    bool is_valid() const {
        return log != nullptr && dispatcher != nullptr && config_driver != nullptr &&
               system_info != nullptr && executor != nullptr && mutex_factory != nullptr;
    }
};

namespace globals {

/// The record that every part of the core reads. Written by `init` alone and never cleared. Not
/// exported by the shared library; for code that links the static `headsetmgmt_core`.
extern Plugins plugins;

}  // namespace globals

/// Installs a copy of `plugins` in the core. Always true. Throws `std::runtime_error` "plugins is
/// not initialized properly" and changes nothing when one of the six is missing. Not while any part
/// of the core is in use.
HEADSETMGMT_EXPORT bool init(Plugins& plugins);

}  // namespace headsetmgmt
