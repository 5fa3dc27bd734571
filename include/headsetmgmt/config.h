// SPDX-License-Identifier: Apache-2.0
// The configuration object of one accessory.

#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/export.h"
#include "headsetmgmt/types.h"

namespace headsetmgmt {

/// One setting of an accessory.
struct ConfigParam {
    std::int32_t usage_id = 0;  ///< the setting's id on the device, and its key in the settings map
    std::string name;           ///< the parameter's name; the device gets it with the value
    std::string value;          ///< the value that the device gets
    std::string access;         ///< "User", "Admin" in any case, or empty when the host set it
};

namespace config {

/// Why settings are sent to a device.
enum ApplyType : std::int32_t {
    CONFIGURE = 0,  ///< the administrator's settings only
    RESET = 1,      ///< all settings
};

/// One accessory's settings map: filled from configuration documents and by the host, sent to the
/// device.
///
/// Made by `create_config`, deleted by `delete_config`. One thread at a time, except that
/// `update_from_host` may write settings while another thread is in `update_from_server`,
/// `apply_config_to_device` or `reset_config`.
class ConfigInterface {
public:
    /// Applies a configuration document: stores its settings, sends the map to the device if the
    /// document has settings for the model, then decides on a firmware upgrade. False when the
    /// document cannot be parsed or has no firmware for the device, even if settings were stored
    /// and sent. The log has the reason.
    virtual bool update_from_server(const std::string& document) = 0;

    /// Records a setting that was changed on the phone; nothing is sent. False for a usage id that
    /// the host may not change.
    virtual bool update_from_host(const std::string& name, int usage_id,
                                  const std::string& value) = 0;

    /// URL of the configuration document: the host's template with its tokens replaced.
    virtual std::string get_config_url() const = 0;

    /// Sends the settings to the device, in the order of their usage ids.
    virtual void apply_config_to_device(ApplyType type) const = 0;

    /// A copy of the settings map, keyed by usage id.
    virtual std::map<int, ConfigParam> retrieve_config() = 0;

    virtual ACCESSORY_TYPE get_type() const = 0;

    /// The object's own copy of the accessory's facts, valid until `update` or until the object is
    /// deleted.
    virtual const AccessoryInfoInterface* get_accessory() const = 0;

    virtual std::string get_accessory_id() const = 0;

    /// Number of repeated fetches for this object; also the index of the TFTP server in
    /// `get_config_url`. The manager counts in a copy of the object: here it stays 0.
    virtual int get_config_retries() const { return config_retries; }
    virtual void set_config_retries(int retries) { config_retries = retries; }

    /// Whether a document with this version stamp (text without a hyphen, a hyphen, epoch
    /// seconds) must be applied. True for an empty stamp, false for a malformed one.
    virtual bool is_config_required(const std::string& version_stamp) const = 0;

    /// Sends every setting to the device, including the user's. Always true.
    virtual bool reset_config() = 0;

    /// Replaces the accessory's facts by a clone of `info`, which must not be null. The next
    /// document is applied whatever its time. Always true.
    virtual bool update(const AccessoryInfoInterface* info) = 0;

    /// A new, independent copy, owned by the caller.
    virtual ConfigInterface* clone() = 0;

    // Last among the virtual operations, where the binary interface has it.
    virtual ~ConfigInterface() = default;

    ConfigInterface& operator=(const ConfigInterface&) = delete;

protected:
    ConfigInterface() = default;
    ConfigInterface(const ConfigInterface&) = default;

    std::int32_t config_retries = 0;
    ACCESSORY_TYPE accessory_type = UNKNOWN;
};

}  // namespace config
}  // namespace headsetmgmt

/// Makes the configuration object of a headset or a camera; null, with a log line, for any other
/// type. Stores a clone of `info`, which must not be null. The caller deletes the object with
/// `delete_config`. A complete plug-in record must be installed. Any thread.
HEADSETMGMT_EXPORT headsetmgmt::config::ConfigInterface*
create_config(const std::string& accessory_id, const headsetmgmt::AccessoryInfoInterface* info);

/// Deletes an object that `create_config` or `clone` made; null is ignored. The plug-in record's
/// interfaces must still exist: on a phone, before `stop_headset_mgmt`. Any thread.
HEADSETMGMT_EXPORT void delete_config(headsetmgmt::config::ConfigInterface* config);
