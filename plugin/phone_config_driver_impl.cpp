// SPDX-License-Identifier: Apache-2.0
// Gives the core access to the devices, through the phone's host functions.

#include "plugin/phone_config_driver_impl.h"

#include "headsetmgmt/phone/host_functions.h"

#include "plugin/host_call.h"

namespace headsetmgmt::config {

bool PhoneConfigDriverImpl::apply_config_to_device(const std::string& accessory_id,
                                                   const std::string& name, int usage_id,
                                                   const std::string& value) const {
    const plugin::HostCall host_call;
    apply_changes(accessory_id.c_str(), name.c_str(), usage_id, value.c_str());
    return true;
}

bool PhoneConfigDriverImpl::request_upgrade(const std::string& accessory_id,
                                            const std::string& version,
                                            const std::string& firmware_name) const {
    const plugin::HostCall host_call;
    request_firmware_upgrade(accessory_id.c_str(), version.c_str(), firmware_name.c_str());
    return true;
}

void PhoneConfigDriverImpl::on_failure(const std::string& /*accessory_id*/,
                                       ConfigureResponse /*response*/) const {}

void PhoneConfigDriverImpl::on_pending(const std::string& /*accessory_id*/,
                                       ConfigureResponse /*response*/) const {}

// Kept although the library never calls it: a host without `check_firmware_upgrade` must fail to
// load the library, as for the other six functions.
[[gnu::used, gnu::retain]] bool
PhoneConfigDriverImpl::check_legacy_upgrade(const std::string& accessory_id) {
    const plugin::HostCall host_call;
    return check_firmware_upgrade(accessory_id.c_str());
}

}  // namespace headsetmgmt::config
