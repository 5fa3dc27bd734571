// SPDX-License-Identifier: Apache-2.0
// What the headers of the configuration objects promise, used with the types they promise. It is
// compiled and never run.

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include <cjson/cJSON.h>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config.h"

#include "config/config_impl.h"
#include "tests/headers/declared.h"

namespace declared {

using headsetmgmt::AccessoryInfoInterface;
using headsetmgmt::ConfigParam;
using headsetmgmt::config::CameraConfigImpl;
using headsetmgmt::config::ConfigImpl;
using headsetmgmt::config::ConfigInterface;
using headsetmgmt::config::HeadsetConfigImpl;

// One setting.

static_assert(offsetof(ConfigParam, usage_id) < offsetof(ConfigParam, name));
static_assert(offsetof(ConfigParam, name) < offsetof(ConfigParam, value));
static_assert(offsetof(ConfigParam, value) < offsetof(ConfigParam, access));

void use_setting() {
    ConfigParam setting;
    expect_type<std::int32_t&>(setting.usage_id);
    expect_type<std::string&>(setting.name);
    expect_type<std::string&>(setting.value);
    expect_type<std::string&>(setting.access);
    const ConfigParam copy(setting);
    setting = copy;
}

// The interface: everything virtual may be overridden.

class Config : public ConfigInterface {
public:
    bool update_from_server(const std::string& /*document*/) override { return true; }
    bool update_from_host(const std::string& /*name*/, int /*usage_id*/,
                          const std::string& /*value*/) override {
        return true;
    }
    std::string get_config_url() const override { return {}; }
    void apply_config_to_device(headsetmgmt::config::ApplyType /*type*/) const override {}
    std::map<int, ConfigParam> retrieve_config() override { return {}; }
    headsetmgmt::ACCESSORY_TYPE get_type() const override { return accessory_type; }
    const AccessoryInfoInterface* get_accessory() const override { return nullptr; }
    std::string get_accessory_id() const override { return {}; }
    int get_config_retries() const override { return config_retries; }
    void set_config_retries(int retries) override { config_retries = retries; }
    bool is_config_required(const std::string& /*version_stamp*/) const override { return true; }
    bool reset_config() override { return true; }
    bool update(const AccessoryInfoInterface* /*info*/) override { return true; }
    ConfigInterface* clone() override { return nullptr; }
    ~Config() override = default;

    static_assert(std::is_same_v<decltype(config_retries), std::int32_t>);
    static_assert(std::is_same_v<decltype(accessory_type), headsetmgmt::ACCESSORY_TYPE>);
};

static_assert(std::is_abstract_v<ConfigInterface>);
static_assert(std::has_virtual_destructor_v<ConfigInterface>);
static_assert(std::is_base_of_v<ConfigInterface, ConfigImpl>);
static_assert(std::is_base_of_v<ConfigImpl, HeadsetConfigImpl>);
static_assert(std::is_base_of_v<ConfigImpl, CameraConfigImpl>);

void use_factory(const std::string& id, const AccessoryInfoInterface* info) {
    ConfigInterface* const made = ::create_config(id, info);
    ::delete_config(made);
}

void use_object(ConfigImpl& config, const AccessoryInfoInterface* info, const std::string& text,
                cJSON* node) {
    expect_type<bool>(config.update_from_server(text));
    expect_type<bool>(config.update_from_host(text, 32, text));
    expect_type<std::string>(config.get_config_url());
    config.apply_config_to_device(headsetmgmt::config::CONFIGURE);
    expect_type<std::map<int, ConfigParam>>(config.retrieve_config());
    expect_type<headsetmgmt::ACCESSORY_TYPE>(config.get_type());
    expect_type<const AccessoryInfoInterface*>(config.get_accessory());
    expect_type<std::string>(config.get_accessory_id());
    expect_type<int>(config.get_config_retries());
    config.set_config_retries(1);
    expect_type<bool>(config.is_config_required(text));
    expect_type<bool>(config.is_config_required(123.5));
    expect_type<bool>(config.reset_config());
    expect_type<bool>(config.update(info));
    expect_type<ConfigInterface*>(config.clone());
    config.reset_timestamps();
    expect_type<std::string>(config.get_firmware_version());
    config.request_upgrade(text, text);

    config.set_map_entry(32, ConfigParam());
    expect_type<int>(config.save_config_to_map(node));
    expect_type<bool>(config.save_common_settings_params(node));
    expect_type<cJSON*>(config.extract_model_firmware_settings(node, text));
    expect_type<bool>(config.save_model_specific_settings_params(node));
    expect_type<bool>(config.parse_remote_default_config(node));
    expect_type<bool>(config.apply_settings(node));

    expect_type<bool>(config.upgrade_firmware(node, text));
    config.upgrade_firmware(text, text, text);
    expect_type<int>(config.check_firmware_upgrade(text, text));
    expect_type<std::vector<std::string>>(config.parse_firmware_version(text));
}

void make_objects(const std::string& id, const AccessoryInfoInterface* info) {
    const ConfigImpl config(id, info, std::string("component"));
    const ConfigImpl copy(config);
    const HeadsetConfigImpl headset(id, info);
    const CameraConfigImpl camera(id, info);
    const ConfigImpl copy_of_a_headset(headset);
}

}  // namespace declared
