// SPDX-License-Identifier: Apache-2.0
// The exported functions: each passes the call on to the plug-in object, unless the library turns
// it away.

#include "headsetmgmt/phone/flat_interface.h"

#include <cstdlib>
#include <string>

#include "headsetmgmt/utilities.h"

#include "plugin/lifecycle.h"

using headsetmgmt::plugin::answer;
using headsetmgmt::plugin::PhonePluginImpl;

bool create_headset_mgmt(HostLogCallback callback) {
    headsetmgmt::plugin::make_library();
    return answer([&](PhonePluginImpl& plugin) {
        plugin.setLogCB(callback);
        return true;
    });
}

bool start_headset_mgmt(const char* phone_model, const char* phone_version,
                        const char* storage_path) {
    return headsetmgmt::plugin::start_library(phone_model, phone_version, storage_path);
}

void stop_headset_mgmt() {
    headsetmgmt::plugin::stop_library();
}

bool setHeadsetConfigUrl(const char* config_url, const char* inventory_post_url,
                         const char* service_url, const char** tftp_servers,
                         const char** korm_servers, const char* user_id) {
    return answer([&](PhonePluginImpl& plugin) {
        return plugin.onHeadsetConfigUrl(config_url, inventory_post_url, service_url, tftp_servers,
                                         korm_servers, user_id);
    });
}

bool configure_headset(std::shared_ptr<AccessoryCache> accessory) {
    return answer([&](PhonePluginImpl& plugin) { return plugin.configure_headset(accessory); });
}

void send_inventory(std::shared_ptr<AccessoryCache> accessory) {
    answer([&](PhonePluginImpl& plugin) {
        plugin.sendInventory(accessory);
        return true;
    });
}

bool update_config(const char* device_id, CONFIG_SETTING_USAGE_ID usage_id, int value) {
    return answer([&](PhonePluginImpl& plugin) {
        return plugin.updateLocalConfig(device_id, usage_id, stringconverter::to_string(value));
    });
}

bool retrieve_config(const char* device_id, CONFIG_SETTING_USAGE_ID usage_id, int* value) {
    return answer([&](PhonePluginImpl& plugin) {
        std::string text;
        if (value == nullptr || !plugin.retrieveConfig(device_id, usage_id, text)) {
            return false;
        }
        // Same result as atoi with a long of 64 bits, on all systems.
        *value = static_cast<int>(std::strtoll(text.c_str(), nullptr, 10));
        return true;
    });
}

void httpResponse(const char* body, int status) {
    answer([&](PhonePluginImpl& plugin) {
        plugin.onHttpResponse(body, status);
        return true;
    });
}

bool factory_reset(const char* device_id) {
    return answer([&](PhonePluginImpl& plugin) { return plugin.factory_reset(device_id); });
}

bool remove_peripheral(const char* device_id) {
    return answer([&](PhonePluginImpl& plugin) { return plugin.removePeripheral(device_id); });
}
