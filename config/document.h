// SPDX-License-Identifier: Apache-2.0
// Reads the nodes of a configuration document: JSON in, small values out.
//
// Pure: no log, no lock, no plug-in. Nodes are borrowed; null is read as a node without members.
// The case of keys is ignored; the first of several equal keys is used. Any thread.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "headsetmgmt/config.h"

struct cJSON;

namespace headsetmgmt::document {

/// The template of a document: the first member, whatever its key, of the first node that has a
/// member "templateConfiguration", from the root down along first children. Null when there is no
/// such node.
const cJSON* find_template(const cJSON* root);

/// "updatedTime" in epoch seconds, 0 when it is not a number; empty when it is missing.
std::optional<double> read_updated_time(const cJSON* configuration_template);

/// "commonSettings"; null when it is missing or empty.
const cJSON* find_common_settings(const cJSON* configuration_template);

/// "modelSpecificSettings"; null when it is missing.
const cJSON* find_model_entries(const cJSON* configuration_template);

/// The texts of a model entry's "models", in their order; empty for an element that is not a text.
std::vector<std::string> read_model_names(const cJSON* model_entry);

/// Whether a model entry with `configured_name` is for the device: the name is not empty and is
/// part of the device's model name, with the same case.
bool serves_model(const std::string& configured_name, const std::string& device_model);

/// A model entry's "modelFirmware"; null when it is missing.
cJSON* find_model_firmware(const cJSON* model_entry);

/// The first of a model's firmware objects; the others are ignored.
struct Firmware {
    std::optional<std::string> name;  ///< "firmwareName"; empty when it is missing or not a text
    std::string version;              ///< "firmwareVersion"; "" when it is missing or not a text
};

Firmware read_firmware(const cJSON* model_firmware);

/// "firmwareParams" of the first firmware object; null when there is none.
const cJSON* find_firmware_params(const cJSON* model_firmware);

/// Why a parameter object is skipped; checked in this order.
enum class ParameterFault {
    none,
    missing_name,      ///< "name" is missing, empty or not a text
    null_usage_id,     ///< "usageId" is missing or null
    null_value,        ///< "value" is missing or null
    invalid_access,    ///< "access" is missing, empty or not a text
    invalid_usage_id,  ///< "usageId" is neither a number nor a text of digits
    invalid_value,     ///< "value" is neither a number nor a text
};

/// One parameter object.
struct Parameter {
    ParameterFault fault = ParameterFault::none;
    int usage_id_number = 0;  ///< integer value of "usageId"; 0 when it came as a text
    ConfigParam setting;  ///< complete without a fault; else only the name is sure, unless missing
};

Parameter read_parameter(const cJSON* parameter);

}  // namespace headsetmgmt::document
