// SPDX-License-Identifier: Apache-2.0
// The settings of a configuration document, with their places.

#include "program/document/settings.h"

#include <map>
#include <utility>

#include <cjson/cJSON.h>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/utilities.h"

namespace headsetmgmt::program {

using document::ParameterFault;

SettingsList read_settings(const cJSON* list, std::size_t most_faulty) {
    SettingsList result;
    std::size_t index = 0;
    const cJSON* element = nullptr;
    cJSON_ArrayForEach(element, list) {
        document::Parameter parameter = document::read_parameter(element);
        if (parameter.fault == ParameterFault::none) {
            const cJSON* access = cJSON_GetObjectItem(element, constants::key_access);
            result.settings.push_back(
                {index, {}, std::move(parameter.setting), cJSON_GetStringValue(access)});
        } else {
            ++result.faulty_count;
            if (result.faulty.size() < most_faulty) {
                result.faulty.push_back(
                    {index, {}, std::move(parameter.setting.name), parameter.fault});
            }
        }
        ++index;
    }
    return result;
}

std::string in_words(ParameterFault fault) {
    switch (fault) {
    case ParameterFault::missing_name:
        return "its name is missing, empty or no text";
    case ParameterFault::null_usage_id:
        return "its usageId is missing or null";
    case ParameterFault::null_value:
        return "its value is missing or null";
    case ParameterFault::invalid_access:
        return "its access is missing, empty or no text";
    case ParameterFault::invalid_usage_id:
        return "its usageId is neither a number nor a text of digits";
    case ParameterFault::invalid_value:
        return "its value is neither a number nor a text";
    case ParameterFault::none:
        break;
    }
    return {};
}

bool is_sent(const ReadSetting& setting) {
    return same_but_for_case(constants::access_admin, setting.param.access);
}

std::vector<KeptSetting> kept_settings(const SettingsList& common, const SettingsList* of_model) {
    std::map<int, KeptSetting> by_usage_id;
    for (const ReadSetting& setting : common.settings) {
        by_usage_id[setting.param.usage_id] = {&setting, true};
    }
    if (of_model != nullptr) {
        for (const ReadSetting& setting : of_model->settings) {
            by_usage_id[setting.param.usage_id] = {&setting, false};
        }
    }
    std::vector<KeptSetting> result;
    result.reserve(by_usage_id.size());
    for (const auto& [usage_id, kept] : by_usage_id) {
        result.push_back(kept);
    }
    return result;
}

}  // namespace headsetmgmt::program
