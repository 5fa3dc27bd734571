// SPDX-License-Identifier: Apache-2.0
// The library's configuration object of one accessory.

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config.h"

#include "core/owners.h"

struct cJSON;

namespace headsetmgmt::config {

/// Common to headsets and cameras, which differ only in their names.
///
/// JSON nodes are borrowed for the call and may be null. Operations that do not name a thread are
/// for the one that uses the object: it holds the manager's registry mutex for a registered object;
/// the worker owns a task's copy.
class ConfigImpl : public ConfigInterface {
public:
    /// Stores a clone of `info`, which must not be null. Log lines begin with `component`.
    ConfigImpl(const std::string& id, const AccessoryInfoInterface* info, std::string component);
    /// An independent copy. Its log lines have no component name.
    ConfigImpl(const ConfigImpl& other);
    ~ConfigImpl() override;

    bool update_from_server(const std::string& document) override;
    bool update_from_host(const std::string& name, int usage_id, const std::string& value) override;
    std::string get_config_url() const override;
    void apply_config_to_device(ApplyType type) const override;
    std::map<int, ConfigParam> retrieve_config() override;
    ACCESSORY_TYPE get_type() const override;
    const AccessoryInfoInterface* get_accessory() const override;
    std::string get_accessory_id() const override;
    bool is_config_required(const std::string& version_stamp) const override;
    bool reset_config() override;
    bool update(const AccessoryInfoInterface* info) override;
    ConfigInterface* clone() override;

    /// Version that the accessory reports.
    std::string get_firmware_version();

    // A document's way (document_flow.cpp).

    /// Stores a template's settings and decides on the firmware. The result is the firmware's.
    bool parse_remote_default_config(const cJSON* configuration_template);

    /// Stores the template's common settings; false when it has none or storing them threw.
    bool save_common_settings_params(const cJSON* configuration_template);

    /// Stores every valid parameter object of the array; returns their number.
    int save_config_to_map(const cJSON* params);

    /// The firmware block of the first model entry for `device_model`; null when there is no such
    /// entry, or when it has no block.
    cJSON* extract_model_firmware_settings(const cJSON* configuration_template,
                                           const std::string& device_model);

    /// Stores and applies a model's settings; whether there is a firmware block.
    bool save_model_specific_settings_params(const cJSON* model_firmware);

    /// Stores a parameter array and, when at least one was stored, sends the map to the device.
    bool apply_settings(const cJSON* params);

    // The settings map (settings_map.cpp).

    /// Stores one setting under `usage_id`, replacing an earlier one. Any thread.
    void set_map_entry(int usage_id, ConfigParam param);

    /// Removes every setting.
    void clear_settings();

    // Where the document comes from (document_source.cpp).

    /// Whether a document with this time, in epoch seconds, differs from the last one.
    bool is_config_required(double template_time) const;

    /// Forgets the time of the last document, so that the next one is applied.
    void reset_timestamps();

    // The upgrade decision (firmware_policy.cpp).

    /// Whether an accessory's firmware is to change.
    enum FirmwareDecision : int {
        keep = 0,
        change = 1,
        downgrade_refused = 2,
        version_unknown = 3
    };

    /// Processes a model's firmware block: leaves the upgrade to the host, skips it, or decides.
    /// False when there is no block or when it has no name.
    bool upgrade_firmware(const cJSON* model_firmware, const std::string& current_version);

    /// Decides, and requests the candidate version from the host if the firmware is to change.
    void upgrade_firmware(const std::string& candidate_version, const std::string& firmware_name,
                          const std::string& current_version);

    /// One of `FirmwareDecision`.
    int check_firmware_upgrade(const std::string& candidate, const std::string& reported);

    /// The fields of a version, which hyphens separate; empty fields are kept.
    std::vector<std::string> parse_firmware_version(const std::string& version);

    /// Requests that the host upgrades the accessory to `version`.
    void request_upgrade(const std::string& version, const std::string& firmware_name);

protected:
    std::map<int, ConfigParam> settings GUARDED_BY(settings_mutex);  // by usage id
    mutable MutexOwner settings_mutex;  // never held while the host is called
    LoggerOwner logger;
    std::string current_model;       // of the latest parse
    double last_updated_time = 0.0;  // of the latest document, in epoch seconds
    std::string accessory_id;
    std::unique_ptr<AccessoryInfoInterface> accessory;
    std::string pending_firmware GUARDED_BY(firmware_mutex);  // latest candidate version
    MutexOwner firmware_mutex;
    std::string logger_name;
};

/// A headset's configuration object.
class HeadsetConfigImpl : public ConfigImpl {
public:
    HeadsetConfigImpl(const std::string& id, const AccessoryInfoInterface* info);
    ~HeadsetConfigImpl() override = default;
};

/// A camera's configuration object.
class CameraConfigImpl : public ConfigImpl {
public:
    CameraConfigImpl(const std::string& id, const AccessoryInfoInterface* info);
    ~CameraConfigImpl() override = default;
};

}  // namespace headsetmgmt::config
