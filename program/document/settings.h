// SPDX-License-Identifier: Apache-2.0
// The settings of a configuration document, with their places.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "headsetmgmt/config.h"

#include "config/document.h"
#include "program/json/places.h"

struct cJSON;

namespace headsetmgmt::program {

/// A setting that the library keeps for an accessory.
struct ReadSetting {
    std::size_t index;  ///< in its list, from 0
    json::Place place;
    ConfigParam param;   ///< as the library stores it
    std::string access;  ///< as the document writes it
};

/// A setting that cannot be read.
struct FaultySetting {
    std::size_t index;  ///< in its list, from 0
    json::Place place;
    std::string name;  ///< empty when it has none
    document::ParameterFault fault;
};

/// "commonSettings", or the "firmwareParams" of a model.
struct SettingsList {
    std::vector<ReadSetting> settings;  ///< in the order of the document
    std::vector<FaultySetting> faulty;  ///< the first of them
    std::size_t faulty_count = 0;       ///< all of them
};

/// The settings of a list, without their places. At most so many faulty ones are kept.
SettingsList read_settings(const cJSON* list, std::size_t most_faulty);

/// What is wrong with a setting: "its value is missing or null".
std::string in_words(document::ParameterFault fault);

/// Whether the setting is sent when the accessory is configured: its access is the administrator's.
bool is_sent(const ReadSetting& setting);

/// A setting that an accessory keeps.
struct KeptSetting {
    const ReadSetting* setting;
    bool is_common;  ///< of the common settings; false: of the model's
};

/// The settings that an accessory keeps, in the order in which they are sent. A setting replaces an
/// earlier one of its usage id, and the model's settings follow the common ones. Borrows both
/// lists; `of_model` may be null.
std::vector<KeptSetting> kept_settings(const SettingsList& common, const SettingsList* of_model);

}  // namespace headsetmgmt::program
