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
    std::string value;          ///< what the device is given
    std::string access;         ///< "User", "Admin" in any case, or empty when the host set it
};

namespace config {

/// Why settings are sent to a device.
enum ApplyType : std::int32_t {
    CONFIGURE = 0,  ///< the administrator's settings only
    RESET = 1,      ///< all settings
};

/// One accessory's settings map, and what it takes to fill it and to bring it to the device.
///
/// Made by `create_config`, deleted by `delete_config`. One thread at a time, except that
/// `update_from_host` may write settings while another thread is in `update_from_server`,
/// `apply_config_to_device` or `reset_config`.
class ConfigInterface {
public:
    /// Reads a configuration document: stores its settings, sends them to the device if the model
    /// has some of its own, then decides on a firmware upgrade. False when the document cannot be
    /// read or has no firmware for the device, also after settings were stored and sent; the log
    /// says why.
    virtual bool update_from_server(const std::string& document) = 0;

    /// Records a setting that was changed on the phone; nothing is sent. False for a usage id that
    /// the host may not change.
    virtual bool update_from_host(const std::string& name, int usage_id,
                                  const std::string& value) = 0;

    /// Where the document is to be fetched: the host's template with its tokens replaced.
    virtual std::string get_config_url() const = 0;

    /// Sends the settings to the device, in the order of their usage ids.
    virtual void apply_config_to_device(ApplyType type) const = 0;

    /// A copy of the settings map, keyed by usage id.
    virtual std::map<int, ConfigParam> retrieve_config() = 0;

    virtual ACCESSORY_TYPE get_type() const = 0;

    /// The object's own copy of the accessory's facts, valid until `update` or the object's end.
    virtual const AccessoryInfoInterface* get_accessory() const = 0;

    virtual std::string get_accessory_id() const = 0;

    /// How often the fetch was repeated for this object, which is also the index of the TFTP server
    /// in `get_config_url`. The manager counts in a copy of the object: here it stays 0.
    virtual int get_config_retries() const { return config_retries; }
    virtual void set_config_retries(int retries) { config_retries = retries; }

    /// Whether a document with this version stamp (text without a hyphen, a hyphen, epoch
    /// seconds) has to be applied. An empty stamp always does, a malformed one never.
    virtual bool is_config_required(const std::string& version_stamp) const = 0;

    /// Sends every setting to the device, the user's too. Always true.
    virtual bool reset_config() = 0;

    /// Takes new facts of the same accessory, of which it keeps a clone, so that the next document
    /// is applied whatever its time. `info` must not be null. Always true.
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

/// A new configuration object for a headset or a camera; null for any other type, which the log
/// says. Keeps a clone of `info`, which must not be null. The caller deletes the object with
/// `delete_config`. A complete plug-in record must be installed. Any thread.
HEADSETMGMT_EXPORT headsetmgmt::config::ConfigInterface*
create_config(const std::string& accessory_id, const headsetmgmt::AccessoryInfoInterface* info);

/// Deletes an object that `create_config` or `clone` made; null is ignored. The plug-in record's
/// interfaces must still be there: on a phone, before `stop_headset_mgmt`. Any thread.
HEADSETMGMT_EXPORT void delete_config(headsetmgmt::config::ConfigInterface* config);
