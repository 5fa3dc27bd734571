// SPDX-License-Identifier: Apache-2.0
// Reads the nodes of a configuration document: JSON in, small values out.

#include "config/document.h"

#include <cstdlib>
#include <utility>

#include <cjson/cJSON.h>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/utilities.h"

namespace headsetmgmt::document {

namespace {

cJSON* member(const cJSON* object, const char* key) {
    return cJSON_GetObjectItem(object, key);
}

const cJSON* first_child(const cJSON* node) {
    return node != nullptr ? node->child : nullptr;
}

/// The item's text; null when it is not a text.
const char* text_of(const cJSON* item) {
    return cJSON_GetStringValue(item);
}

std::string text_or_empty(const cJSON* item) {
    const char* text = text_of(item);
    return text != nullptr ? text : "";
}

bool is_missing_or_null(const cJSON* item) {
    return item == nullptr || cJSON_IsNull(item) != 0;
}

/// Whether `key` is `wanted`, ignoring the case of letters.
bool is_key(const char* key, const char* wanted) {
    const auto lower = [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A'))
                                                    : character;
    };
    for (; *wanted != '\0'; ++key, ++wanted) {
        if (lower(*key) != lower(*wanted)) {
            return false;
        }
    }
    return *key == '\0';
}

/// The members of a parameter object, found in one pass; null if missing.
struct ParameterItems {
    const cJSON* name = nullptr;
    const cJSON* usage_id = nullptr;
    const cJSON* value = nullptr;
    const cJSON* access = nullptr;
};

ParameterItems find_parameter_items(const cJSON* parameter) {
    ParameterItems items;
    const auto is_first = [](const cJSON* found, const cJSON* item, const char* key) {
        return found == nullptr && is_key(item->string, key);
    };
    const cJSON* item = nullptr;
    cJSON_ArrayForEach(item, parameter) {
        if (item->string == nullptr) {
            continue;  // element of an array
        }
        if (is_first(items.name, item, constants::key_name)) {
            items.name = item;
        } else if (is_first(items.usage_id, item, constants::key_usage_id)) {
            items.usage_id = item;
        } else if (is_first(items.value, item, constants::key_value)) {
            items.value = item;
        } else if (is_first(items.access, item, constants::key_access)) {
            items.access = item;
        }
    }
    return items;
}

std::optional<int> read_usage_id(const cJSON* item) {
    if (cJSON_IsNumber(item) != 0) {
        return item->valueint;
    }
    char* text = cJSON_GetStringValue(item);
    if (text != nullptr && is_number(text)) {
        // Same result as atoi with a long of 64 bits, on all systems.
        return static_cast<int>(std::strtoll(text, nullptr, 10));
    }
    return std::nullopt;
}

std::optional<std::string> read_value(const cJSON* item) {
    if (cJSON_IsNumber(item) != 0) {
        return stringconverter::to_string(item->valueint);
    }
    const char* text = text_of(item);
    if (text != nullptr) {
        return text;
    }
    return std::nullopt;
}

}  // namespace

const cJSON* find_template(const cJSON* root) {
    const cJSON* node = root;
    while (node != nullptr && member(node, constants::key_template_configuration) == nullptr) {
        const cJSON* first = first_child(node);
        node = cJSON_IsArray(first) != 0 ? first_child(first) : first;
    }
    return first_child(node);
}

std::optional<double> read_updated_time(const cJSON* configuration_template) {
    const cJSON* item = member(configuration_template, constants::key_updated_time);
    if (item == nullptr) {
        return std::nullopt;
    }
    return item->valuedouble;
}

const cJSON* find_common_settings(const cJSON* configuration_template) {
    const cJSON* settings = member(configuration_template, constants::key_common_settings);
    return first_child(settings) != nullptr ? settings : nullptr;
}

const cJSON* find_model_entries(const cJSON* configuration_template) {
    return member(configuration_template, constants::key_model_specific_settings);
}

std::vector<std::string> read_model_names(const cJSON* model_entry) {
    std::vector<std::string> names;
    const cJSON* name = nullptr;
    cJSON_ArrayForEach(name, member(model_entry, constants::key_models)) {
        names.push_back(text_or_empty(name));
    }
    return names;
}

bool serves_model(const std::string& configured_name, const std::string& device_model) {
    return !configured_name.empty() && device_model.find(configured_name) != std::string::npos;
}

cJSON* find_model_firmware(const cJSON* model_entry) {
    return member(model_entry, constants::key_model_firmware);
}

Firmware read_firmware(const cJSON* model_firmware) {
    const cJSON* object = first_child(model_firmware);
    Firmware firmware;
    if (const char* name = text_of(member(object, constants::key_firmware_name))) {
        firmware.name = name;
    }
    firmware.version = text_or_empty(member(object, constants::key_firmware_version));
    return firmware;
}

const cJSON* find_firmware_params(const cJSON* model_firmware) {
    return member(first_child(model_firmware), constants::key_firmware_params);
}

Parameter read_parameter(const cJSON* parameter) {
    const ParameterItems items = find_parameter_items(parameter);

    Parameter reading;
    const auto faulty = [&reading](ParameterFault fault) {
        reading.fault = fault;
        return std::move(reading);
    };
    reading.setting.name = text_or_empty(items.name);
    if (reading.setting.name.empty()) {
        return faulty(ParameterFault::missing_name);
    }
    if (is_missing_or_null(items.usage_id)) {
        return faulty(ParameterFault::null_usage_id);
    }
    if (is_missing_or_null(items.value)) {
        return faulty(ParameterFault::null_value);
    }
    reading.setting.access = text_or_empty(items.access);
    if (reading.setting.access.empty()) {
        return faulty(ParameterFault::invalid_access);
    }
    const std::optional<int> usage_id = read_usage_id(items.usage_id);
    if (!usage_id) {
        return faulty(ParameterFault::invalid_usage_id);
    }
    std::optional<std::string> value = read_value(items.value);
    if (!value) {
        return faulty(ParameterFault::invalid_value);
    }
    // "Admin" keeps the spelling of the document; every other access is the user's.
    if (!same_but_for_case(constants::access_admin, reading.setting.access)) {
        reading.setting.access = constants::access_user;
    }
    reading.usage_id_number = items.usage_id->valueint;
    reading.setting.usage_id = *usage_id;
    reading.setting.value = std::move(*value);
    return reading;
}

}  // namespace headsetmgmt::document
