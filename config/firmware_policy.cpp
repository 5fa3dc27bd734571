// SPDX-License-Identifier: Apache-2.0
// Whether an accessory's firmware is to change.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include <cjson/cJSON.h>

#include "headsetmgmt/constants.h"
#include "headsetmgmt/plugins.h"
#include "headsetmgmt/utilities.h"

#include "config/config_impl.h"
#include "config/document.h"
#include "core/locks.h"

namespace headsetmgmt::config {

namespace {

/// Compares two versions with the same number of fields, field by field, as numbers. Equal numbers
/// in different spellings are also a change.
ConfigImpl::FirmwareDecision compare_fields(const std::vector<std::string>& candidate,
                                            const std::vector<std::string>& reported) {
    for (std::size_t i = 0; i < candidate.size(); ++i) {
        const long long candidate_field = std::strtoll(candidate[i].c_str(), nullptr, 10);
        const long long reported_field = std::strtoll(reported[i].c_str(), nullptr, 10);
        if (candidate_field != reported_field) {
            return candidate_field < reported_field ? ConfigImpl::downgrade_refused
                                                    : ConfigImpl::change;
        }
    }
    return ConfigImpl::change;
}

}  // namespace

bool ConfigImpl::upgrade_firmware(const cJSON* model_firmware, const std::string& current_version) {
    if (model_firmware == nullptr) {
        logger->notice() << "upgrade_firmware" << constants::tag_parsing_err
                         << ": Model_firmware_settings do not exist";
        return false;
    }
    logger->notice() << "upgrade_firmware: received " << cJSON_GetArraySize(model_firmware)
                     << " entries for model firmware";
    const document::Firmware firmware = document::read_firmware(model_firmware);
    if (!firmware.name) {
        // "firmare", and no separator below: the texts are fixed.
        logger->error() << "upgrade_firmware" << constants::tag_korm_err
                        << ": no/null firmare name in JSON";
        return false;
    }
    if (same_but_for_case(constants::firmware_latest, *firmware.name)) {
        logger->notice() << "upgrade_firmware: Legacy Flow - delegate upgrade to config driver";
        globals::plugins.config_driver->check_legacy_upgrade(accessory_id);
    } else if (same_but_for_case(constants::firmware_current, firmware.version)) {
        logger->debug() << "upgrade_firmwarestay on current version, skip upgrade";
    } else {
        upgrade_firmware(firmware.version, *firmware.name, current_version);
    }
    logger->debug() << "upgrade_firmware: Success.";
    return true;
}

void ConfigImpl::upgrade_firmware(const std::string& candidate_version,
                                  const std::string& firmware_name,
                                  const std::string& current_version) {
    const int decision = check_firmware_upgrade(candidate_version, current_version);
    {
        const ScopedLock<MutexOwner> firmware_lock(firmware_mutex);
        pending_firmware = candidate_version;
    }
    if (decision == change) {
        logger->notice() << "upgrade_firmware: Requesting upgrade to " << candidate_version;
        request_upgrade(candidate_version, firmware_name);
    } else if (decision == downgrade_refused) {
        logger->notice() << "upgrade_firmware: No support for firmware downgrade. Exiting.";
    } else if (decision == keep) {
        logger->notice() << "upgrade_firmware: No upgrade required. This firmware's settings have "
                            "been applied.";
    }
    logger->debug() << "upgrade_firmware: Done";
}

int ConfigImpl::check_firmware_upgrade(const std::string& candidate, const std::string& reported) {
    const std::vector<std::string> candidate_fields = parse_firmware_version(candidate);
    logger->notice() << "check_firmware_upgrade: FW ver candidate from Configuration: "
                     << candidate;
    const std::vector<std::string> reported_fields = parse_firmware_version(reported);
    logger->notice() << "check_firmware_upgrade: System info reported FW: " << reported;

    if (candidate.empty() || reported.empty()) {
        logger->info() << "check_firmware_upgrade: firmware version is empty";
        return version_unknown;
    }
    if (candidate == reported) {
        logger->info() << "check_firmware_upgrade: versions are the same, do nothing";
        return keep;
    }
    // Only the candidate is checked, not the version that the accessory reports.
    if (is_naming_corrupted(candidate)) {
        logger->warning() << "check_firmware_upgrade: naming format not supported, candidate<"
                          << candidate << ">, reported<" << reported << ">";
        return keep;
    }
    if (headset_support_downgrade(accessory.get())) {
        return change;
    }
    if (candidate_fields.size() != reported_fields.size()) {
        logger->warning() << "check_firmware_upgrade: name formats do not match, allow anyway";
        return change;
    }
    if (is_alpha(candidate) || is_alpha(reported)) {
        logger->info() << "check_firmware_upgrade: switching between dev and release, allow";
        return change;
    }
    return compare_fields(candidate_fields, reported_fields);
}

std::vector<std::string> ConfigImpl::parse_firmware_version(const std::string& version) {
    logger->info() << "parse_firmware_version: Parsing: " << version;
    std::vector<std::string> fields;
    fields.reserve(static_cast<std::size_t>(std::count(version.begin(), version.end(), '-')) + 1);
    std::string::size_type start = 0;
    std::string::size_type hyphen = version.find('-');
    while (hyphen != std::string::npos) {
        fields.push_back(version.substr(start, hyphen - start));
        start = hyphen + 1;
        hyphen = version.find('-', start);
    }
    fields.push_back(version.substr(start));
    return fields;
}

}  // namespace headsetmgmt::config
