// SPDX-License-Identifier: Apache-2.0
// What a configuration document does to an accessory's firmware.

#pragma once

#include <string>

struct cJSON;

namespace headsetmgmt::program {

/// What the library decides.
struct FirmwareDecision {
    enum class Kind {
        none,             ///< the document cannot be used
        left_to_phone,    ///< "firmwareName" is LATEST
        stays,            ///< "firmwareVersion" is Current
        version_missing,  ///< a version is empty
        same_version,
        spelling_refused,  ///< the document's version has other characters than are allowed
        upgrade,           ///< the phone is asked for the document's version, newer or older
    };

    Kind kind = Kind::none;
    std::string firmware_name;
    std::string wanted;       ///< the document's version
    std::string reported;     ///< the accessory's version, or its dongle's
    bool is_dongles = false;  ///< it is about the accessory's dongle

    /// Whether the two versions were compared.
    bool has_compared() const;
};

/// The decision on a "modelFirmware" that has a firmware name.
FirmwareDecision decide_on_firmware(const cJSON* model_firmware, const std::string& reported,
                                    bool is_dongles);

/// Why a "modelFirmware" cannot be used; empty when it can.
std::string fault_of_firmware(const cJSON* model_firmware);

/// The decision in a sentence; empty when there is none.
std::string in_words(const FirmwareDecision& decision);

}  // namespace headsetmgmt::program
