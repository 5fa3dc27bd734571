// SPDX-License-Identifier: Apache-2.0
// What the interfaces answer where an implementation says nothing.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/system_info.h"

namespace headsetmgmt {
namespace {

/// A phone that gives what it must.
class TerseSystemInfo : public SystemInfoInterface {
public:
    std::string get_host_client_type() override { return "-"; }
    std::string get_host_device_name() override { return "-"; }
    std::string get_host_serial_number() override { return "-"; }
    std::string get_host_model() override { return "-"; }
    std::string get_host_software_version() override { return "-"; }
    std::string get_host_hardware_version() override { return "-"; }
    std::string get_host_user_id() override { return "-"; }
    std::string get_persistent_storage_location() override { return "-"; }
    std::string get_config_url() override { return "-"; }
    std::string get_inventory_post_url() override { return "-"; }
    std::string get_metrics_service_info_url() override { return "-"; }
    std::string get_korm_server(unsigned int /*index*/) override { return "-"; }
    std::string get_tftp_server(unsigned int /*index*/) override { return "-"; }
    std::vector<std::string> get_korm_servers() override { return {"-"}; }
    bool data_ready() override { return true; }
};

/// An accessory that gives what it must.
class TerseAccessory : public AccessoryInfoInterface {
public:
    ACCESSORY_TYPE get_type() const override { return HEADSET; }
    AccessoryInfoInterface* clone() const override { return new TerseAccessory(); }
    std::string get_vendor(SystemInfoInterface* /*system_info*/) override { return "-"; }
    std::string get_model() override { return "-"; }
    std::string get_serial_number(SystemInfoInterface* /*system_info*/) override { return "-"; }
    std::string get_software_version() override { return "-"; }
    std::string get_hardware_version() override { return "-"; }
    std::string get_dock_serial_number() override { return "-"; }
    std::string get_dock_model() override { return "-"; }
    std::string get_dongle_serial_number() override { return "-"; }
    std::string get_dongle_model() override { return "-"; }
    std::string get_dongle_version() override { return "-"; }
    std::string get_connection_type() override { return "-"; }
    std::string get_connection_status() override { return "-"; }
    bool data_ready() override { return true; }
    bool firmware_data_ready() override { return true; }
    bool is_varos_vid() override { return true; }
    void set_connection(const std::string& /*type*/, const std::string& /*status*/) override {}
    void reset() override {}
};

TEST(InterfacesTest, PhoneWithoutOverridesHasNoSystemVersionAndNoDescription) {
    TerseSystemInfo phone;

    EXPECT_EQ(phone.get_host_os_version(), "");
    EXPECT_EQ(phone.to_string(), "");
}

TEST(InterfacesTest, AccessoryWithoutOverridesHasNoDescription) {
    TerseAccessory accessory;

    EXPECT_EQ(accessory.to_string(), "");
}

}  // namespace
}  // namespace headsetmgmt
