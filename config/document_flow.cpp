// SPDX-License-Identifier: Apache-2.0
// A document's way: parsed, its template read, the common settings and those of the model stored,
// the map sent to the device, the firmware decided. In the order in which a document passes.

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <cjson/cJSON.h>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/utilities.h"

#include "config/config_impl.h"
#include "config/document.h"
#include "core/json.h"
#include "core/locks.h"

namespace headsetmgmt::config {

bool ConfigImpl::update_from_server(const std::string& document) {
    if (document.empty()) {
        // Not parsed: there is no parser error to log.
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

bool ConfigImpl::parse_remote_default_config(const cJSON* configuration_template) {
    if (configuration_template == nullptr) {
        logger->notice() << "parse_remote_default_config : No default config settings to parse";
        return false;
    }
    logger->info() << "parse_remote_default_config Enter:";
    const std::optional<double> updated_time = document::read_updated_time(configuration_template);
    logger->info() << "parse_remote_default_config parsed updated_time:";

    const std::string device_model = get_headset_model(accessory.get());
    logger->info() << "parse_remote_default_config: Current accessory plugged in: " << device_model;
    if (!current_model.empty() && current_model != device_model) {
        logger->notice() << "parse_remote_default_config: Model change detected !!";
        clear_settings();
    }
    current_model = device_model;

    if (updated_time) {
        last_updated_time = *updated_time;
        logger->info() << "parse_remote_default_config: Updated time: " << last_updated_time;
    } else {
        logger->notice() << "parse_remote_default_config: No timestamp found on the config. "
                            "Proceed with updating config.";
    }

    const bool common_saved = save_common_settings_params(configuration_template);
    const cJSON* model_firmware =
        extract_model_firmware_settings(configuration_template, device_model);
    const bool model_saved = save_model_specific_settings_params(model_firmware);
    if (!common_saved && model_saved) {
        logger->info() << "parse_remote_default_config: Common settings were not saved";
    } else if (common_saved && !model_saved) {
        logger->info() << "parse_remote_default_config: Model specific settings were not saved";
    } else if (!common_saved) {
        logger->notice() << "parse_remote_default_config" << constants::tag_parsing_err
                         << ": No settings found to save.";
    }

    // The settings are for the headset. The firmware is for the dongle, if there is one.
    std::string current_version = get_firmware_version();
    const std::string dongle_model = accessory->get_dongle_model();
    if (!dongle_model.empty()) {
        model_firmware = extract_model_firmware_settings(configuration_template, dongle_model);
        current_version = accessory->get_dongle_version();
        logger->info() << "parse_remote_default_config: found dongle [" << dongle_model
                       << "], will upgrade dongle only";
    }
    // The only result that counts: common settings without a firmware block fail the document, a
    // firmware block without settings passes it.
    const bool result = upgrade_firmware(model_firmware, current_version);
    logger->info() << (result ? "parse_remote_default_config: Success"
                              : "parse_remote_default_config: Failed");
    return result;
}

bool ConfigImpl::save_common_settings_params(const cJSON* configuration_template) {
    if (configuration_template == nullptr) {
        logger->info() << "save_common_settings_params: No default common settings found.";
        return false;
    }
    const cJSON* common_settings = document::find_common_settings(configuration_template);
    if (common_settings == nullptr) {
        logger->info() << "save_common_settings_params: Common settings not found in config";
        return false;
    }
    try {
        save_config_to_map(common_settings);
    } catch (const std::runtime_error& error) {
        logger->error() << "save_common_settings_params" << constants::tag_lib_err << error.what();
        return false;
    }
    // Also when none of them was valid.
    logger->notice() << "save_common_settings_params: success";
    return true;
}

namespace {

/// Log text for a faulty parameter. The parameter's name follows, except after `missing_name`.
const char* message_of(document::ParameterFault fault) {
    // In the order of the faults.
    static constexpr const char* messages[] = {
        "",  // none
        ": Parameter extracted has missing KEY name. Cannot identify which parameter.",
        ": Null Usage ID for param ",
        ": Null Value for param ",
        ": Invalid Access field for param ",
        ": Invalid Usage ID for param ",
        ": Invalid Value for param ",
    };
    return messages[static_cast<std::size_t>(fault)];
}

}  // namespace

int ConfigImpl::save_config_to_map(const cJSON* params) {
    int count = 0;
    const cJSON* element = nullptr;
    cJSON_ArrayForEach(element, params) {
        document::Parameter parameter = document::read_parameter(element);
        if (parameter.fault != document::ParameterFault::none) {
            // The name may be empty.
            logger->notice() << "save_config_to_map" << constants::tag_korm_err
                             << message_of(parameter.fault) << parameter.setting.name;
            continue;
        }
        // Composed before the texts move into the map, delivered afterwards.
        log::LogStream line = logger->debug();
        line << "save_config_to_map: " << parameter.usage_id_number
             << ", key: " << parameter.setting.name << ", value: " << parameter.setting.value
             << ", access: " << parameter.setting.access;
        const int usage_id = parameter.setting.usage_id;
        try {
            set_map_entry(usage_id, std::move(parameter.setting));
        } catch (...) {
            line.discard();
            throw;
        }
        ++count;
    }
    // The host may write settings meanwhile.
    std::size_t map_size = 0;
    {
        const ScopedLock<MutexOwner> settings_lock(settings_mutex);
        map_size = settings.size();
    }
    logger->debug() << "save_config_to_map: Saved " << count
                    << " settings. current map size: " << map_size;
    return count;
}

cJSON* ConfigImpl::extract_model_firmware_settings(const cJSON* configuration_template,
                                                   const std::string& device_model) {
    logger->debug() << "extract_model_firmware_settings: MODEL NAME " << device_model;
    const cJSON* entries = document::find_model_entries(configuration_template);
    if (entries == nullptr) {
        logger->notice() << "extract_model_firmware_settings" << constants::tag_korm_err
                         << ": Model specific settings not found in config";
        return nullptr;
    }
    const cJSON* entry = nullptr;
    cJSON_ArrayForEach(entry, entries) {
        for (const std::string& name : document::read_model_names(entry)) {
            logger->debug() << "extract_model_firmware_settings config_model_name: " << name
                            << ", device_model_name: " << device_model;
            if (document::serves_model(name, device_model)) {
                return document::find_model_firmware(entry);
            }
        }
    }
    return nullptr;
}

bool ConfigImpl::save_model_specific_settings_params(const cJSON* model_firmware) {
    if (model_firmware == nullptr) {
        logger->info()
            << "save_model_specific_settings_params : Model_firmware_settings do not exist";
        return false;
    }
    apply_settings(document::find_firmware_params(model_firmware));
    // The result says that there is a firmware block, not whether its settings were applied.
    logger->debug() << "save_model_specific_settings_params: Success.";
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

}  // namespace headsetmgmt::config
