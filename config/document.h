// Reads the nodes of a configuration document: JSON in, small values out.
//
// Pure: no log, no lock, no plug-in. Nodes are borrowed and may be null, which reads like a node
// without members. Keys are found without regard to case, and the first of several wins. Any
// thread.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "headsetmgmt/config.h"

struct cJSON;

namespace headsetmgmt::document {

/// The template of a document: the first member of the first node, on the way down along first
/// children, that has a member "templateConfiguration". It is found by its place, whatever its key;
/// null when there is none.
const cJSON* find_template(const cJSON* root);

/// "updatedTime" in epoch seconds, 0 when it is no number; empty when the template has none.
std::optional<double> read_updated_time(const cJSON* configuration_template);

/// "commonSettings"; null when the template has none, or an empty one.
const cJSON* find_common_settings(const cJSON* configuration_template);

/// "modelSpecificSettings"; null when the template has none.
const cJSON* find_model_entries(const cJSON* configuration_template);

/// The texts of a model entry's "models", in their order; an element that is no text is empty.
std::vector<std::string> read_model_names(const cJSON* model_entry);

/// Whether a model entry that names `configured_name` serves the device: the name is not empty and
/// occurs in the device's model name, case counting.
bool serves_model(const std::string& configured_name, const std::string& device_model);

/// A model entry's "modelFirmware"; null when it has none.
cJSON* find_model_firmware(const cJSON* model_entry);

/// The first of a model's firmware objects, the only one that counts.
struct Firmware {
    std::optional<std::string> name;  ///< "firmwareName"; empty when it is missing or no text
    std::string version;              ///< "firmwareVersion"; "" when it is missing or no text
};

Firmware read_firmware(const cJSON* model_firmware);

/// "firmwareParams" of the first firmware object; null when there is none.
const cJSON* find_firmware_params(const cJSON* model_firmware);

/// Why a parameter object is passed over; looked for in this order.
enum class ParameterFault {
    none,
    missing_name,      ///< "name" is missing, empty or no text
    null_usage_id,     ///< "usageId" is missing or null
    null_value,        ///< "value" is missing or null
    invalid_access,    ///< "access" is missing, empty or no text
    invalid_usage_id,  ///< "usageId" is neither a number nor a text of digits
    invalid_value,     ///< "value" is neither a number nor a text
};

/// One parameter object.
struct Parameter {
    ParameterFault fault = ParameterFault::none;
    int usage_id_number = 0;  ///< integer value of "usageId"; 0 when it came as a text
    ConfigParam setting;  ///< complete when there is no fault; the name is there but for the first
};

Parameter read_parameter(const cJSON* parameter);

}  // namespace headsetmgmt::document
