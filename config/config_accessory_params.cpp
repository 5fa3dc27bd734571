// SPDX-License-Identifier: Apache-2.0
// Parameters of a task that fetches a configuration document.

#include "config/config_accessory_params.h"

#include "headsetmgmt/plugins.h"
#include "headsetmgmt/utilities.h"

namespace headsetmgmt::config {

namespace {

/// Seconds to wait before a document is requested again.
unsigned int back_off() {
    constexpr unsigned int base = 30;
    constexpr unsigned int spread = 10;
    return get_seconds_to_wait(base, spread);
}

}  // namespace

ConfigAccessoryParams::ConfigAccessoryParams(ConfigInterface* object)
    : config(object != nullptr ? object->clone() : nullptr) {
    if (config && config->get_config_retries() >= 1) {
        defer_time = back_off();
    }
}

ConfigAccessoryParams::ConfigAccessoryParams(const ConfigAccessoryParams& other)
    : TaskParametersInterface(other), config(other.config ? other.config->clone() : nullptr),
      defer_time(other.defer_time), timeout(other.timeout) {}

TaskParametersInterface* ConfigAccessoryParams::clone() const {
    return new ConfigAccessoryParams(*this);
}

int ConfigAccessoryParams::get_type() const {
    return configure_accessory;
}

int ConfigAccessoryParams::check_status() {
    if (globals::plugins.system_info == nullptr || !config) {
        return drop;
    }
    // The getters of an accessory are not const; this one belongs to the task's own copy.
    auto* accessory = const_cast<AccessoryInfoInterface*>(config->get_accessory());
    if (accessory->firmware_data_ready()) {
        return ready;
    }
    constexpr unsigned int seconds_to_next_look = 6;
    defer_time = seconds_to_next_look;
    return not_ready;
}

unsigned int ConfigAccessoryParams::get_timeout() const {
    return timeout;
}

unsigned int ConfigAccessoryParams::get_defer_time() const {
    return defer_time;
}

ConfigInterface* ConfigAccessoryParams::get_config() const {
    return config.get();
}

}  // namespace headsetmgmt::config
