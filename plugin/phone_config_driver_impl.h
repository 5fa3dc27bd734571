// The way from the core to the devices through the phone's host functions.

#pragma once

#include <string>

#include "headsetmgmt/host_config_driver.h"

namespace headsetmgmt::config {

/// Hands settings and upgrade requests to the host; what the host answers is not passed on. Any
/// thread.
class PhoneConfigDriverImpl : public HostConfigDriverInterface {
public:
    bool apply_config_to_device(const std::string& accessory_id, const std::string& name,
                                int usage_id, const std::string& value) const override;
    bool request_upgrade(const std::string& accessory_id, const std::string& version,
                         const std::string& firmware_name) const override;
    void on_failure(const std::string& accessory_id, ConfigureResponse response) const override;
    void on_pending(const std::string& accessory_id, ConfigureResponse response) const override;

    /// What the host says to an upgrade of the accessory, for those who hold the concrete class.
    /// Not const, so it does not override the interface's operation of this name: a call through
    /// the interface answers true without asking the host, and that is wanted.
    bool check_legacy_upgrade(const std::string& accessory_id);

    // Beside its namesake, so that no compiler takes the one above for a slip that hides it.
    using HostConfigDriverInterface::check_legacy_upgrade;
};

}  // namespace headsetmgmt::config
