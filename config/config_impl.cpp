// SPDX-License-Identifier: Apache-2.0
// Configuration objects: made, copied and asked; new facts, reset, upgrade requests.

#include "config/config_impl.h"

#include <utility>

#include "headsetmgmt/plugins.h"

namespace headsetmgmt::config {

ConfigImpl::ConfigImpl(const std::string& id, const AccessoryInfoInterface* info,
                       std::string component)
    : logger(make_logger(component)), accessory_id(id), logger_name(std::move(component)) {
    // In the body: the locks are made after the logger, and the accessory is cloned last.
    settings_mutex = make_mutex(false);
    config_retries = 0;
    firmware_mutex = make_mutex(false);
    accessory.reset(info->clone());
}

ConfigImpl::ConfigImpl(const ConfigImpl& other)
    : ConfigInterface(other), settings(other.settings), settings_mutex(make_mutex(false)),
      // No name, so that a copy's log lines differ from the original's. The name is copied last.
      logger(make_logger("")), current_model(other.current_model),
      last_updated_time(other.last_updated_time), accessory_id(other.accessory_id),
      accessory(other.accessory->clone()), pending_firmware(other.pending_firmware),
      firmware_mutex(make_mutex(false)), logger_name(other.logger_name) {}

ConfigImpl::~ConfigImpl() {
    clear_settings();
    // A fixed order, which is not that of the members.
    accessory.reset();
    logger.reset();
    firmware_mutex.reset();
    settings_mutex.reset();
}

ACCESSORY_TYPE ConfigImpl::get_type() const {
    return accessory_type;
}

const AccessoryInfoInterface* ConfigImpl::get_accessory() const {
    return accessory.get();
}

std::string ConfigImpl::get_accessory_id() const {
    return accessory_id;
}

bool ConfigImpl::reset_config() {
    logger->info() << "reset_config: Resetting config";
    apply_config_to_device(ApplyType::RESET);
    return true;
}

bool ConfigImpl::update(const AccessoryInfoInterface* info) {
    reset_timestamps();
    set_config_retries(0);
    // Cloned before the old facts are deleted: memory may run out, and `info` may be the old facts.
    accessory.reset(info->clone());
    return true;
}

ConfigInterface* ConfigImpl::clone() {
    return new ConfigImpl(*this);
}

std::string ConfigImpl::get_firmware_version() {
    return accessory->get_software_version();
}

void ConfigImpl::request_upgrade(const std::string& version, const std::string& firmware_name) {
    globals::plugins.config_driver->request_upgrade(accessory_id, version, firmware_name);
}

HeadsetConfigImpl::HeadsetConfigImpl(const std::string& id, const AccessoryInfoInterface* info)
    : ConfigImpl(id, info, "HeadsetConfigImpl") {
    accessory_type = HEADSET;
}

CameraConfigImpl::CameraConfigImpl(const std::string& id, const AccessoryInfoInterface* info)
    : ConfigImpl(id, info, "CameraConfigImpl") {
    accessory_type = CAMERA;
}

}  // namespace headsetmgmt::config
