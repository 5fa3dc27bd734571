// The registry of configuration objects and the configuration run.

#pragma once

#include <map>
#include <string>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config.h"

namespace headsetmgmt::config {

/// Keeps one configuration object for each attached accessory and sees to it that each is
/// configured. At most one configuration run, the fetch of one document for all accessories of the
/// pending set, is under way at any time.
///
/// Any thread, also from inside the host driver. Accessories are named by the host's ids.
class ConfigManager {
public:
    /// Registers an accessory, or refreshes a known one, and asks for its configuration. The id
    /// when a run was started or is under way, else empty. `info` is borrowed.
    virtual std::string initialize_accessory(const std::string& id,
                                             const AccessoryInfoInterface* info) = 0;

    /// Starts a run, or joins the one under way. `config_url` is the version stamp of the document
    /// on offer, empty when there is none; with a stamp, every registered accessory takes part.
    /// False when the accessory is not known or needs no configuring.
    virtual bool configure_accessory(const std::string& id, std::string config_url) = 0;

    /// Forgets an accessory. One that is not known is ignored.
    virtual void remove_accessory(const std::string& id) = 0;

    /// Hands the fetched document to the pending set and ends the run. False when no run is under
    /// way: the document is dropped.
    virtual bool on_fetch_config_success(std::string& document) = 0;

    /// Queues the fetch again, unless 100 are queued already. `reason` is for the log. False when
    /// no run is under way, or when the run was given up.
    virtual bool on_fetch_config_failure(int reason) = 0;

    /// Sends all settings to the device again. False when the accessory is not known.
    virtual bool reset_to_admin_defaults(const std::string& id) = 0;

    /// A copy of the accessory's settings map; empty when the accessory is not known.
    virtual std::map<int, ConfigParam> retrieve_config(const std::string& id) = 0;

    /// The name of the setting that stands under `key`; empty when there is none.
    virtual std::string retrieve_config(const std::string& id, int key) = 0;

    // Last among the virtual operations, where the binary interface has it.
    virtual ~ConfigManager() = default;
};

/// The one manager, made on the first call. A complete plug-in record must be installed
/// (`std::runtime_error` "plugins hasn't been initialized properly" otherwise). Not while another
/// thread makes or deletes it. These two are not exported by the shared library; they are for code
/// that links the static `headsetmgmt_core`.
ConfigManager* create_config_manager();

/// Deletes the manager and its configuration objects; does nothing when there is none.
void delete_config_manager();

}  // namespace headsetmgmt::config
