// SPDX-License-Identifier: Apache-2.0
// Makes the configuration object of an accessory.

#include "headsetmgmt/config.h"

#include "config/config_impl.h"
#include "core/owners.h"

namespace config = headsetmgmt::config;

config::ConfigInterface* create_config(const std::string& accessory_id,
                                       const headsetmgmt::AccessoryInfoInterface* info) {
    const headsetmgmt::LoggerOwner logger = headsetmgmt::make_logger("ConfigFactory");
    switch (info->get_type()) {
    case headsetmgmt::HEADSET:
        return new config::HeadsetConfigImpl(accessory_id, info);
    case headsetmgmt::CAMERA:
        return new config::CameraConfigImpl(accessory_id, info);
    default:
        logger->info() << "::create_config: Unknown accessory type";
        return nullptr;
    }
}

void delete_config(config::ConfigInterface* config) {
    delete config;
}
