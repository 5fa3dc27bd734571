// SPDX-License-Identifier: Apache-2.0
// Makes and deletes loggers.

#include "headsetmgmt/log.h"

headsetmgmt::log::Logger* create_logger(headsetmgmt::log::HostLogInterface* host,
                                        const std::string& name, bool enabled) {
    return new headsetmgmt::log::Logger(host, name, enabled);
}

void delete_logger(headsetmgmt::log::Logger* logger) {
    delete logger;
}
