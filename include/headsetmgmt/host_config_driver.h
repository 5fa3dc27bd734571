// What the host does for a device: take settings, upgrade firmware.

#pragma once

#include <cstdint>
#include <string>

#include "headsetmgmt/types.h"

namespace headsetmgmt::config {

/// How a request for a configuration document went.
struct ConfigureResponse {
    /// `outcome` is a value of `RequestStatus`.
    explicit ConfigureResponse(std::int32_t outcome)
        : status(static_cast<RequestStatus>(outcome)) {}

    RequestStatus status;
};

/// The way from the core to the devices.
///
/// Any thread. Made and deleted by the plug-in; everyone else borrows it through `Plugins`. An
/// accessory is named by the id under which it was attached. The library looks at none of the
/// results.
class HostConfigDriverInterface {
public:
    virtual ~HostConfigDriverInterface() = default;

    /// Sends one setting to the device.
    virtual bool apply_config_to_device(const std::string& accessory_id, const std::string& name,
                                        int usage_id, const std::string& value) const = 0;

    /// Tells that the upgrade of the accessory is left to the host. Does nothing and answers true
    /// unless it is overridden.
    virtual bool check_legacy_upgrade(const std::string& accessory_id) const {
        static_cast<void>(accessory_id);
        return true;
    }

    /// Asks for an upgrade to `version` with the image `firmware_name`.
    virtual bool request_upgrade(const std::string& accessory_id, const std::string& version,
                                 const std::string& firmware_name) const = 0;

    /// Tells that the accessory could not be configured. The id is empty when several were waiting.
    virtual void on_failure(const std::string& accessory_id, ConfigureResponse response) const = 0;

    /// Tells that the document is on its way. The id is empty when several are waiting.
    virtual void on_pending(const std::string& accessory_id, ConfigureResponse response) const = 0;
};

}  // namespace headsetmgmt::config
