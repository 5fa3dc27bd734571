// SPDX-License-Identifier: Apache-2.0
// The plug-in object's events: passed from the host to the core.

#include <exception>
#include <memory>
#include <new>
#include <string>

#include "headsetmgmt/metrics.h"

#include "metrics/metric_owner.h"
#include "plugin/accessory_info_impl.h"
#include "plugin/host_text.h"
#include "plugin/phone_plugin_impl.h"
#include "plugin/phone_system_info_impl.h"

namespace headsetmgmt::plugin {

namespace {

constexpr int status_ok = 200;
constexpr int servers_of_a_kind = 3;

struct UsageName {
    int usage_id;
    const char* name;
};

/// Display names of the usage ids, in the order of the ids.
constexpr UsageName usage_names[] = {
    {USAGE_SPEAKER_VOLUME, "Speaker Volume"},
    {USAGE_MICROPHONE_GAIN, "Microphone Gain"},
    {USAGE_SIDETONE, "Sidetone"},
    {USAGE_EQUALIZER, "Equalizer"},
    {USAGE_AUDIO_BANDWIDTH, "Audio Bandwidth"},
    {USAGE_BLUETOOTH, "Bluetooth"},
};

bool is_given(const char* text) {
    return text != nullptr && *text != '\0';
}

/// The entry at `index`; null when the array is null.
const char* server_at(const char** servers, int index) {
    return servers != nullptr ? servers[index] : nullptr;
}

}  // namespace

bool PhonePluginImpl::configure_headset(const std::shared_ptr<AccessoryCache>& cache) {
    debug("PhonePluginImpl::configure_headset ENTER\n");
    if (config_mgr_ == nullptr || cache == nullptr) {
        return false;
    }
    const std::shared_ptr<AccessoryInfoImpl> info = to_accessory_info(*cache);
    debug("PhonePluginImpl::configure_headset " + info->to_string());
    const std::string configured = config_mgr_->initialize_accessory(info->device_id(), info.get());
    if (configured.empty()) {
        return false;
    }
    debug("PhonePluginImpl::configure_headset: suceeded.\n");  // the text is fixed
    return true;
}

void PhonePluginImpl::sendInventory(const std::shared_ptr<AccessoryCache>& cache) {
    // Not the core's plug-in record, which keeps its pointers after a stop.
    if (config_mgr_ == nullptr || cache == nullptr) {
        return;
    }
    const std::shared_ptr<AccessoryInfoImpl> info = to_accessory_info(*cache);
    debug("PhonePluginImpl::sendInventory " + info->to_string());

    try {
        const metrics::MetricOwner metric(create_metric(info.get()));
        metric->send();
    } catch (const std::exception& error) {
        debug(std::string("PhonePluginImpl::sendInventory ") + error.what() + "\n");
    }
}

bool PhonePluginImpl::onHeadsetConfigUrl(const char* config_url, const char* inventory_post_url,
                                         const char* service_url, const char** tftp_servers,
                                         const char** korm_servers, const char* user_id) {
    if (config_mgr_ == nullptr) {
        return false;
    }
    // Made by `init_plugins`, so it is of the phone's own class, which alone has setters.
    auto& phone = static_cast<config::PhoneSystemInfoImpl&>(*phone_system_info_);
    if (is_given(config_url)) {
        phone.setConfigUrl(config_url);
    }
    if (is_given(inventory_post_url)) {
        phone.setInventoryPostUrl(inventory_post_url);
    }
    if (is_given(service_url)) {
        phone.setServiceUrl(service_url);
    }
    if (is_given(user_id)) {
        phone.setUserId(user_id);
    }
    for (int index = 0; index < servers_of_a_kind; ++index) {
        const char* tftp_server = server_at(tftp_servers, index);
        if (is_given(tftp_server)) {
            phone.addTftpServer(tftp_server);
        }
        const char* korm_server = server_at(korm_servers, index);
        if (is_given(korm_server)) {
            phone.addKormServer(korm_server);
        }
    }
    return true;
}

bool PhonePluginImpl::removePeripheral(const char* device_id) {
    debug("PhonePluginImpl::removePeripheral ENTER\n");
    if (config_mgr_ == nullptr) {
        return false;
    }
    config_mgr_->remove_accessory(text_or_empty(device_id));
    return true;
}

int PhonePluginImpl::keyToUsageId(const std::string& key) {
    for (const UsageName& row : usage_names) {
        if (key == row.name) {
            return row.usage_id;
        }
    }
    return 0;
}

bool PhonePluginImpl::updateLocalConfig(const char* /*device_id*/, int /*usage_id*/,
                                        const std::string& /*value*/) {
    return false;
}

void PhonePluginImpl::onHttpResponse(const char* body, int status) {
    if (config_mgr_ == nullptr) {
        return;
    }
    if (status != status_ok) {
        config_mgr_->on_fetch_config_failure(status);
        return;
    }
    std::string document;
    try {
        document = text_or_empty(body);
    } catch (const std::bad_alloc&) {
        // The document stays empty and fails, but the run ends.
    }
    config_mgr_->on_fetch_config_success(document);
}

bool PhonePluginImpl::retrieveConfig(const char* device_id, int usage_id, std::string& value) {
    if (config_mgr_ == nullptr) {
        return false;
    }
    value = config_mgr_->retrieve_config(text_or_empty(device_id), usage_id);
    return !value.empty();
}

bool PhonePluginImpl::factory_reset(const char* device_id) {
    if (config_mgr_ == nullptr) {
        return false;
    }
    return config_mgr_->reset_to_admin_defaults(text_or_empty(device_id));
}

}  // namespace headsetmgmt::plugin
