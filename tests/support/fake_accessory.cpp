// SPDX-License-Identifier: Apache-2.0
// An accessory whose facts the test sets.

#include "support/fake_accessory.h"

#include <stdexcept>

namespace headsetmgmt::test_support {

FakeAccessory::FakeAccessory(const FakeAccessory& other)
    : AccessoryInfoInterface(), type(other.type), vendor(other.vendor), model(other.model),
      serial_number(other.serial_number), software_version(other.software_version),
      hardware_version(other.hardware_version), dock_serial_number(other.dock_serial_number),
      dock_model(other.dock_model), dongle_serial_number(other.dongle_serial_number),
      dongle_model(other.dongle_model), dongle_version(other.dongle_version),
      connection_type(other.connection_type), connection_status(other.connection_status),
      text(other.text), varos_vid(other.varos_vid), asked_with(other.asked_with),
      shared(other.shared) {
    ++shared->alive;
}

AccessoryInfoInterface* FakeAccessory::clone() const {
    if (shared->clone_fault.is_now()) {
        throw std::runtime_error("fake accessory");
    }
    return new FakeAccessory(*this);
}

std::string FakeAccessory::get_vendor(SystemInfoInterface* system_info) {
    if (shared->vendor_fault.is_now()) {
        throw std::runtime_error("fake accessory");
    }
    asked_with = system_info;
    shared->last_asked_with = system_info;
    return vendor;
}

std::string FakeAccessory::get_serial_number(SystemInfoInterface* system_info) {
    asked_with = system_info;
    shared->last_asked_with = system_info;
    return serial_number;
}

void FakeAccessory::set_connection(const std::string& type_of_link, const std::string& status) {
    connection_type = type_of_link;
    connection_status = status;
}

}  // namespace headsetmgmt::test_support
