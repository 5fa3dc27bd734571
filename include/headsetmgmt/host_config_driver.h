// SPDX-License-Identifier: Apache-2.0
// The host's operations on devices: settings and firmware upgrades.

#pragma once

#include <cstdint>
#include <string>

#include "headsetmgmt/types.h"

namespace headsetmgmt::config {

/// Result of a request for a configuration document.
struct ConfigureResponse {
    /// `outcome` is a value of `RequestStatus`.
    explicit ConfigureResponse(std::int32_t outcome)
        : status(static_cast<RequestStatus>(outcome)) {}

    RequestStatus status;
};

/// Gives the core access to the devices.
///
/// Any thread. Made and deleted by the plug-in; everyone else borrows it through `Plugins`. An
/// accessory is identified by the id under which it was attached. The library ignores the results.
class HostConfigDriverInterface {
public:
    virtual ~HostConfigDriverInterface() = default;

    /// Sends one setting to the device.
    virtual bool apply_config_to_device(const std::string& accessory_id, const std::string& name,
                                        int usage_id, const std::string& value) const = 0;

    /// Reports that the host alone decides on the accessory's upgrade. By default does nothing and
    /// returns true.
    virtual bool check_legacy_upgrade(const std::string& accessory_id) const {
        static_cast<void>(accessory_id);
        return true;
    }

    /// Requests an upgrade to `version` with the image `firmware_name`.
    virtual bool request_upgrade(const std::string& accessory_id, const std::string& version,
                                 const std::string& firmware_name) const = 0;

    /// Reports that the accessory could not be configured. The id is empty when several were
    /// waiting.
    virtual void on_failure(const std::string& accessory_id, ConfigureResponse response) const = 0;

    /// Reports that the document was requested. The id is empty when several are waiting.
    virtual void on_pending(const std::string& accessory_id, ConfigureResponse response) const = 0;
};

}  // namespace headsetmgmt::config
