// From server and host into the settings map, and from the map to the device.

#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/utilities.h"

#include "config/config_impl.h"
#include "config/document.h"
#include "core/json.h"

namespace headsetmgmt::config {

namespace {

/// Whether the host may change the setting. A fixed range of its own, apart from what it displays.
bool is_host_changeable(int usage_id) {
    constexpr int first = 32;
    constexpr int last = 35;
    return usage_id >= first && usage_id <= last;
}

}  // namespace

bool ConfigImpl::update_from_server(const std::string& document) {
    if (document.empty()) {
        // Without a parse, the parser's last error is another document's, whose text is gone.
        logger->info() << "update_from_server: Nothing to parse";
        return false;
    }
    std::optional<std::string> unparsed;
    JsonOwner tree = parse_json(document, unparsed);
    if (!tree) {
        if (unparsed) {  // always, with cJSON 1.7
            logger->info() << "update_from_server: " << *unparsed;
        }
        return false;
    }
    logger->info() << "update_from_server Enter:";
    const cJSON* configuration_template = document::find_template(tree.get());
    if (configuration_template == nullptr) {
        logger->info() << "update_from_server: No template config found.";
        logger->debug() << "update_from_server: No config found.";
        return false;
    }
    if (!parse_remote_default_config(configuration_template)) {
        logger->debug() << "update_from_server: Parsing remote config failed.";
        return false;
    }
    tree.reset();
    logger->info() << "update_from_server: success";
    return true;
}

bool ConfigImpl::update_from_host(const std::string& name, int usage_id, const std::string& value) {
    if (!is_host_changeable(usage_id)) {
        logger->info() << "update_from_host: Invalid user setting";
        return false;
    }
    // The host has changed the device already; this is for the record. No access: not from a
    // document.
    set_map_entry(usage_id, ConfigParam{usage_id, name, value, ""});
    logger->info() << "update_from_host: Updated id: " << usage_id << ", key: " << name
                   << ", value: " << value;
    return true;
}

bool ConfigImpl::apply_settings(const cJSON* params) {
    if (params == nullptr) {
        logger->warning() << "apply_settings: No settings available for firmware";
        return false;
    }
    int count = 0;
    try {
        count = save_config_to_map(params);
    } catch (const std::runtime_error& error) {
        logger->error() << "apply_settings" << constants::tag_lib_err << ": " << error.what();
    }
    if (count == 0) {
        logger->notice() << "apply_settings: Failed to apply current firmware version settings.";
        return false;
    }
    apply_config_to_device(ApplyType::CONFIGURE);
    return true;
}

void ConfigImpl::apply_config_to_device(ApplyType type) const {
    const bool reset = type != ApplyType::CONFIGURE;
    // One line for each setting, but composed once.
    const std::string type_line =
        logger->line(reset ? "apply_config_to_device: Apply type: RESET"
                           : "apply_config_to_device: Apply type: CONFIGURE");
    std::unique_lock<MutexInterface> settings_lock(*settings_mutex);
    if (settings.empty()) {
        settings_lock.unlock();
        logger->error() << "apply_config_to_device: No config settings found to apply to device";
        return;
    }
    // A copy, for the host may change the entry while it is sent; of what is sent alone. Its room
    // serves all of them.
    ConfigParam setting;
    auto entry = settings.begin();
    while (entry != settings.end()) {
        const int key = entry->first;
        const bool sent = reset || same_but_for_case(constants::access_admin, entry->second.access);
        if (sent) {
            setting.usage_id = entry->second.usage_id;
            setting.name = entry->second.name;
            setting.value = entry->second.value;
        }
        settings_lock.unlock();

        logger->write(log::LogLevel::notice, type_line);
        if (sent) {
            logger->debug() << "apply_config_to_device: " << setting.name
                            << " : (usage id: " << setting.usage_id << " , value: " << setting.value
                            << ")";
            globals::plugins.config_driver->apply_config_to_device(accessory_id, setting.name,
                                                                   setting.usage_id, setting.value);
        }

        // By key: whatever the host called meanwhile may have changed the map.
        settings_lock.lock();
        entry = settings.upper_bound(key);
    }
}

}  // namespace headsetmgmt::config
