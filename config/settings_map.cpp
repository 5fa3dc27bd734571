// SPDX-License-Identifier: Apache-2.0
// The settings map: written, read, changed by the host, and sent to the device.

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/utilities.h"

#include "config/config_impl.h"
#include "core/locks.h"

namespace headsetmgmt::config {

void ConfigImpl::set_map_entry(int usage_id, ConfigParam param) {
    const ScopedLock<MutexOwner> settings_lock(settings_mutex);
    // Most documents have ascending usage ids: the hint is then right.
    settings.insert_or_assign(settings.end(), usage_id, std::move(param));
}

void ConfigImpl::clear_settings() {
    const ScopedLock<MutexOwner> settings_lock(settings_mutex);
    settings.clear();
}

// Without the lock: nobody may write settings meanwhile (config.h).
std::map<int, ConfigParam> ConfigImpl::retrieve_config() NO_THREAD_SAFETY_ANALYSIS {
    return settings;
}

namespace {

/// Whether the host may change the setting. A fixed range, not that of the settings it displays.
bool is_host_changeable(int usage_id) {
    constexpr int first = 32;
    constexpr int last = 35;
    return usage_id >= first && usage_id <= last;
}

}  // namespace

bool ConfigImpl::update_from_host(const std::string& name, int usage_id, const std::string& value) {
    if (!is_host_changeable(usage_id)) {
        logger->info() << "update_from_host: Invalid user setting";
        return false;
    }
    // The host has already changed the device; this only records it. No access, because the setting
    // is not from a document.
    set_map_entry(usage_id, ConfigParam{usage_id, name, value, ""});
    logger->info() << "update_from_host: Updated id: " << usage_id << ", key: " << name
                   << ", value: " << value;
    return true;
}

void ConfigImpl::apply_config_to_device(ApplyType type) const {
    const bool reset = type != ApplyType::CONFIGURE;
    // Written for each setting, composed once.
    const std::string type_line =
        logger->line(reset ? "apply_config_to_device: Apply type: RESET"
                           : "apply_config_to_device: Apply type: CONFIGURE");
    // A copy of what is sent: the host may change the entry while it is sent. Reused for all
    // entries.
    ConfigParam setting;
    std::optional<int> key;  // of the previous entry
    while (true) {
        bool sent = false;
        {
            const ScopedLock<MutexOwner> settings_lock(settings_mutex);
            // By key: calls of the host may have changed the map meanwhile.
            const auto entry = key ? settings.upper_bound(*key) : settings.begin();
            if (entry == settings.end()) {
                break;
            }
            key = entry->first;
            sent = reset || same_but_for_case(constants::access_admin, entry->second.access);
            if (sent) {
                setting.usage_id = entry->second.usage_id;
                setting.name = entry->second.name;
                setting.value = entry->second.value;
            }
        }
        logger->write(log::LogLevel::notice, type_line);
        if (sent) {
            logger->debug() << "apply_config_to_device: " << setting.name
                            << " : (usage id: " << setting.usage_id << " , value: " << setting.value
                            << ")";
            globals::plugins.config_driver->apply_config_to_device(accessory_id, setting.name,
                                                                   setting.usage_id, setting.value);
        }
    }
    if (!key) {
        logger->error() << "apply_config_to_device: No config settings found to apply to device";
    }
}

}  // namespace headsetmgmt::config
