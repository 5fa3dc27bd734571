// SPDX-License-Identifier: Apache-2.0
// Gives the core access to the devices, through the phone's host functions.

#pragma once

#include <string>

#include "headsetmgmt/host_config_driver.h"

namespace headsetmgmt::config {

/// Passes settings and upgrade requests to the host and ignores its results. Any thread.
class PhoneConfigDriverImpl : public HostConfigDriverInterface {
public:
    bool apply_config_to_device(const std::string& accessory_id, const std::string& name,
                                int usage_id, const std::string& value) const override;
    bool request_upgrade(const std::string& accessory_id, const std::string& version,
                         const std::string& firmware_name) const override;
    void on_failure(const std::string& accessory_id, ConfigureResponse response) const override;
    void on_pending(const std::string& accessory_id, ConfigureResponse response) const override;

    /// Whether the host would upgrade the accessory by itself. Not const, so it does not override
    /// the interface's operation of this name: a call through the interface returns true without
    /// calling the host. This is intended.
    bool check_legacy_upgrade(const std::string& accessory_id);

    // Makes both visible, so that no compiler warns that the one above hides the other.
    using HostConfigDriverInterface::check_legacy_upgrade;
};

}  // namespace headsetmgmt::config
