// SPDX-License-Identifier: Apache-2.0
// The phone's record of an accessory.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/phone/host_types.h"

namespace headsetmgmt {

/// An accessory as described by the host. After construction only `set_connection` changes it. One
/// thread at a time.
class AccessoryInfoImpl : public AccessoryInfoInterface {
public:
    /// Connection type and status are empty at first.
    AccessoryInfoImpl(ACCESSORY_TYPE accessory_type, const std::string& device_id,
                      const std::string& vendor_name, const std::string& serial,
                      const std::string& model_name, const std::string& software,
                      const std::string& hardware, const std::string& dock_serial,
                      const std::string& dock_model_name, const std::string& dongle_serial,
                      const std::string& dongle_model_name, const std::string& dongle_software,
                      int usb_vendor_id);
    AccessoryInfoImpl(const AccessoryInfoImpl&) = default;
    AccessoryInfoImpl& operator=(const AccessoryInfoImpl&) = delete;

    /// The host's id of the accessory.
    std::string device_id() const { return id; }

    ACCESSORY_TYPE get_type() const override { return type; }
    AccessoryInfoInterface* clone() const override { return new AccessoryInfoImpl(*this); }
    std::string get_vendor(SystemInfoInterface* system_info) override;
    std::string get_model() override { return model; }
    std::string get_serial_number(SystemInfoInterface* system_info) override;
    std::string get_software_version() override { return software_version; }
    std::string get_hardware_version() override { return hardware_version; }
    std::string get_dock_serial_number() override { return dock_serial_number; }
    std::string get_dock_model() override { return dock_model; }
    std::string get_dongle_serial_number() override { return dongle_serial_number; }
    std::string get_dongle_model() override { return dongle_model; }
    std::string get_dongle_version() override { return dongle_version; }
    std::string get_connection_type() override { return connection_type; }
    std::string get_connection_status() override { return connection_status; }

    /// One fact per line, those of dock and dongle with the model first.
    std::string to_string() override;

    /// Always true: the host reports everything at once.
    bool data_ready() override { return true; }

    /// Whether software version and model are known.
    bool firmware_data_ready() override;
    bool is_varos_vid() override;
    void set_connection(const std::string& new_type, const std::string& new_status) override;

    /// Does nothing: no facts are added after construction.
    void reset() override {}
    ~AccessoryInfoImpl() override = default;

private:
    ACCESSORY_TYPE type;
    std::string id;
    std::string vendor;
    std::string serial_number;
    std::string model;
    std::string software_version;
    std::string hardware_version;
    std::string dock_serial_number;
    std::string dock_model;
    std::string dongle_serial_number;
    std::string dongle_model;
    std::string dongle_version;
    std::string connection_type;
    std::string connection_status;
    std::int32_t vendor_id;
};

/// Converts the host's record into the library's. Texts with NULs are copied whole.
std::shared_ptr<AccessoryInfoImpl> to_accessory_info(const AccessoryCache& cache);

}  // namespace headsetmgmt
