// SPDX-License-Identifier: Apache-2.0
// The registry of configuration objects and the configuration run.

#pragma once

#include <map>
#include <string>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config.h"

namespace headsetmgmt::config {

/// Holds one configuration object for each attached accessory and configures each of them. At most
/// one configuration run is under way at a time: it fetches one document for all accessories of the
/// pending set.
///
/// Any thread, also from inside the host driver. The host's ids identify accessories.
class ConfigManager {
public:
    /// Registers an accessory, or updates a known one, and requests its configuration. Returns the
    /// id when a run was started or is under way, else an empty text. `info` is borrowed.
    virtual std::string initialize_accessory(const std::string& id,
                                             const AccessoryInfoInterface* info) = 0;

    /// Starts a run, or joins the one under way. `config_url` is the version stamp of the available
    /// document, empty if unknown; with a stamp, every registered accessory takes part. False when
    /// the accessory is not known or does not need the document.
    virtual bool configure_accessory(const std::string& id, std::string config_url) = 0;

    /// Removes an accessory and its configuration object. An unknown id is ignored.
    virtual void remove_accessory(const std::string& id) = 0;

    /// Applies the fetched document to the pending set and ends the run. False when no run is under
    /// way: the document is dropped.
    virtual bool on_fetch_config_success(std::string& document) = 0;

    /// Queues the fetch again, unless 100 are already queued. `reason` is for the log. False when
    /// no run is under way, or when the run was abandoned.
    virtual bool on_fetch_config_failure(int reason) = 0;

    /// Sends all settings to the device again. False when the accessory is not known.
    virtual bool reset_to_admin_defaults(const std::string& id) = 0;

    /// A copy of the accessory's settings map; empty when the accessory is not known.
    virtual std::map<int, ConfigParam> retrieve_config(const std::string& id) = 0;

    /// The name of the setting with usage id `key`; empty when there is none.
    virtual std::string retrieve_config(const std::string& id, int key) = 0;

    // Last among the virtual operations, where the binary interface has it.
    virtual ~ConfigManager() = default;
};

/// The one manager, made on the first call. A complete plug-in record must be installed
/// (otherwise throws `std::runtime_error` "plugins hasn't been initialized properly"). Not while
/// another thread makes or deletes the manager. This function and the next are not exported by the
/// shared library; they are for code that links the static `headsetmgmt_core`.
ConfigManager* create_config_manager();

/// Deletes the manager and its configuration objects; does nothing when there is none.
void delete_config_manager();

}  // namespace headsetmgmt::config
