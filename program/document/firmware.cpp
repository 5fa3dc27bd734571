// SPDX-License-Identifier: Apache-2.0
// What a configuration document does to an accessory's firmware.

#include "program/document/firmware.h"

#include <cjson/cJSON.h>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/utilities.h"

#include "config/document.h"
#include "program/document/node_type.h"
#include "program/utf8.h"

namespace headsetmgmt::program {

namespace {

std::string missing_version(const FirmwareDecision& decision) {
    const std::string of_document = "firmwareVersion is missing, empty or not a text";
    const std::string accessory = decision.is_dongles ? "the dongle" : "the accessory";
    if (decision.wanted.empty() && decision.reported.empty()) {
        return "none: " + of_document + ", and " + accessory + " reports no version";
    }
    return "none: " + (decision.wanted.empty() ? of_document : accessory + " reports no version");
}

}  // namespace

bool FirmwareDecision::has_compared() const {
    return kind != Kind::none && kind != Kind::left_to_phone && kind != Kind::stays;
}

std::string fault_of_firmware(const cJSON* model_firmware) {
    if (document::read_firmware(model_firmware).name) {
        return {};
    }
    if (cJSON_IsArray(model_firmware) == 0) {
        return "its modelFirmware is " + type_of(model_firmware) +
               ", and must be an array with a firmware object";
    }
    return cJSON_GetArraySize(model_firmware) == 0
               ? "its modelFirmware has no entries"
               : "the first entry of its modelFirmware has no firmwareName, or one that is no text";
}

FirmwareDecision decide_on_firmware(const cJSON* model_firmware, const std::string& reported,
                                    bool is_dongles) {
    using Kind = FirmwareDecision::Kind;
    const document::Firmware firmware = document::read_firmware(model_firmware);
    FirmwareDecision decision = {Kind::none, firmware.name.value_or(""), firmware.version, reported,
                                 is_dongles};
    if (same_but_for_case(constants::firmware_latest, decision.firmware_name)) {
        decision.kind = Kind::left_to_phone;
    } else if (same_but_for_case(constants::firmware_current, decision.wanted)) {
        decision.kind = Kind::stays;
    } else if (decision.wanted.empty() || reported.empty()) {
        decision.kind = Kind::version_missing;
    } else if (decision.wanted == reported) {
        decision.kind = Kind::same_version;
    } else if (is_naming_corrupted(decision.wanted)) {
        decision.kind = Kind::spelling_refused;
    } else {
        // Older ones too: every accessory may be moved to an older firmware.
        decision.kind = Kind::upgrade;
    }
    return decision;
}

std::string in_words(const FirmwareDecision& decision) {
    using Kind = FirmwareDecision::Kind;
    switch (decision.kind) {
    case Kind::left_to_phone:
        return "no upgrade requested: the document says LATEST";
    case Kind::stays:
        return "stays on the current version, as the document says";
    case Kind::version_missing:
        return missing_version(decision);
    case Kind::same_version:
        return "no upgrade required";
    case Kind::spelling_refused:
        return "\"" + shortened(decision.wanted) +
               "\" is not a version (only letters, digits and hyphens): " + decision.reported +
               " is kept";
    case Kind::upgrade:
        return "upgrade requested to " + shortened(decision.wanted);
    case Kind::none:
        break;
    }
    return {};
}

}  // namespace headsetmgmt::program
