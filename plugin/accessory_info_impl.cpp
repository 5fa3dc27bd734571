// SPDX-License-Identifier: Apache-2.0
// The phone's record of an accessory.

#include "plugin/accessory_info_impl.h"

#include <cstddef>
#include <string>

namespace headsetmgmt {

AccessoryInfoImpl::AccessoryInfoImpl(ACCESSORY_TYPE accessory_type, const std::string& device_id,
                                     const std::string& vendor_name, const std::string& serial,
                                     const std::string& model_name, const std::string& software,
                                     const std::string& hardware, const std::string& dock_serial,
                                     const std::string& dock_model_name,
                                     const std::string& dongle_serial,
                                     const std::string& dongle_model_name,
                                     const std::string& dongle_software, int usb_vendor_id)
    : type(accessory_type), id(device_id), vendor(vendor_name), serial_number(serial),
      model(model_name), software_version(software), hardware_version(hardware),
      dock_serial_number(dock_serial), dock_model(dock_model_name),
      dongle_serial_number(dongle_serial), dongle_model(dongle_model_name),
      dongle_version(dongle_software), vendor_id(usb_vendor_id) {}

std::string AccessoryInfoImpl::get_vendor(SystemInfoInterface* /*system_info*/) {
    return vendor;
}

std::string AccessoryInfoImpl::get_serial_number(SystemInfoInterface* /*system_info*/) {
    return serial_number;
}

std::string AccessoryInfoImpl::to_string() {
    constexpr std::size_t usual_size = 512;
    std::string text;
    text.reserve(usual_size);
    text = "Accessory Info:\n";
    const auto add = [&text](const char* fact, const std::string& value) {
        text.append(fact).append(value).push_back('\n');
    };
    add("type:", accessory_type_to_string(type));
    add("id:", id);
    add("vendor:", vendor);
    add("vendor id:", std::to_string(vendor_id));
    add("model:", model);
    add("serial number:", serial_number);
    add("sw ver:", software_version);
    add("hw ver:", hardware_version);
    add("dock model:", dock_model);
    add("dock serial number:", dock_serial_number);
    add("dongle model:", dongle_model);
    add("dongle serial number:", dongle_serial_number);
    add("dongle version:", dongle_version);
    add("connection type:", connection_type);
    add("connection status:", connection_status);
    text += '\n';
    return text;
}

bool AccessoryInfoImpl::firmware_data_ready() {
    // Through the getters, which a derived class may override.
    return !get_software_version().empty() && !get_model().empty();
}

bool AccessoryInfoImpl::is_varos_vid() {
    return vendor_id == HEADSETMGMT_MAKER_VENDOR_ID;
}

void AccessoryInfoImpl::set_connection(const std::string& new_type, const std::string& new_status) {
    connection_type = new_type;
    connection_status = new_status;
}

std::shared_ptr<AccessoryInfoImpl> to_accessory_info(const AccessoryCache& cache) {
    auto info = std::make_shared<AccessoryInfoImpl>(
        static_cast<ACCESSORY_TYPE>(cache.accessory_type), cache.device_id, cache.vendor,
        cache.serial_number, cache.model, cache.software_version, cache.hardware_version,
        cache.dock_serial_number, cache.dock_model, cache.dongle_serial_number, cache.dongle_model,
        cache.dongle_version, cache.vendor_id);
    info->set_connection(cache.connection_type, cache.connection_status);
    return info;
}

}  // namespace headsetmgmt
