// SPDX-License-Identifier: Apache-2.0
// The shared texts: each value, and the order in which the header defines them.

#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "headsetmgmt/constants.h"

namespace constants = headsetmgmt::constants;

namespace {

// Fixed at compile time, so that loading the library builds none of them.
static_assert(std::string_view(constants::default_config_file) == "defaultheadsetconfig.json");
static_assert(std::string_view(constants::http_prefix) == "http://");
static_assert(std::string_view(constants::https_prefix) == "https://");
static_assert(std::string_view(constants::tftp_prefix) == "tftp://");
static_assert(std::string_view(constants::tftp_token) == "{tftp}");
static_assert(std::string_view(constants::varos) == "Varos");
static_assert(std::string_view(constants::unknown) == "Unknown");
static_assert(std::string_view(constants::key_time) == "time");
static_assert(std::string_view(constants::key_updated_time) == "updatedTime");
static_assert(std::string_view(constants::key_settings) == "settings");
static_assert(std::string_view(constants::key_name) == "name");
static_assert(std::string_view(constants::key_usage_id) == "usageId");
static_assert(std::string_view(constants::key_key) == "key");
static_assert(std::string_view(constants::key_value) == "value");
static_assert(std::string_view(constants::key_access) == "access");
static_assert(std::string_view(constants::access_user) == "User");
static_assert(std::string_view(constants::access_admin) == "Admin");
static_assert(std::string_view(constants::key_firmware_name) == "firmwareName");
static_assert(std::string_view(constants::firmware_latest) == "LATEST");
static_assert(std::string_view(constants::firmware_current) == "Current");
static_assert(std::string_view(constants::key_firmware_params) == "firmwareParams");
static_assert(std::string_view(constants::key_firmware_version) == "firmwareVersion");
static_assert(std::string_view(constants::key_common_settings) == "commonSettings");
static_assert(std::string_view(constants::key_model_specific_settings) == "modelSpecificSettings");
static_assert(std::string_view(constants::key_models) == "models");
static_assert(std::string_view(constants::key_model_firmware) == "modelFirmware");
static_assert(std::string_view(constants::key_latest) == "latest");
static_assert(std::string_view(constants::key_template_configuration) == "templateConfiguration");
static_assert(std::string_view(constants::key_user_configuration) == "userConfiguration");
static_assert(std::string_view(constants::key_user_id) == "userId");
static_assert(std::string_view(constants::key_headset_inventory) == "headsetInventory");
static_assert(std::string_view(constants::key_camera_inventory) == "cameraInventory");
static_assert(std::string_view(constants::key_host) == "host");
static_assert(std::string_view(constants::key_dock) == "dock");
static_assert(std::string_view(constants::key_accessory) == "accessory");
static_assert(std::string_view(constants::key_headset) == "headset");
static_assert(std::string_view(constants::key_camera) == "camera");
static_assert(std::string_view(constants::key_client) == "client");
static_assert(std::string_view(constants::key_serial_number) == "serialNumber");
static_assert(std::string_view(constants::key_device_name) == "deviceName");
static_assert(std::string_view(constants::key_vendor) == "vendor");
static_assert(std::string_view(constants::key_model) == "model");
static_assert(std::string_view(constants::key_host_os_version) == "hostOSVersion");
static_assert(std::string_view(constants::key_connection_type) == "connectionType");
static_assert(std::string_view(constants::key_connection_status) == "connectionStatus");
static_assert(std::string_view(constants::varos_k30) == "Varos K30");
static_assert(std::string_view(constants::varos_k20) == "Varos K20");
static_assert(std::string_view(constants::connected) == "connected");
static_assert(std::string_view(constants::tag_lib_err) == "[LIB-ERR]");
static_assert(std::string_view(constants::tag_korm_err) == "[KORM-ERR]");
static_assert(std::string_view(constants::tag_parsing_err) == "[PARSING-ERR]");
static_assert(std::string_view(constants::tag_plugin_err) == "[PLUGIN-ERR]");
static_assert(std::string_view(constants::tag_network_err) == "[NETWORK-ERR]");
static_assert(std::string_view(constants::tag_system_err) == "[SYSTEM-ERR]");
static_assert(std::string_view(constants::remote_config_file) == "defaultheadsetconfig.json");

TEST(ConstantsTest, HeaderDefinesThemInTheirFixedOrder) {
    const std::vector<std::string> expected = {
        "defaultheadsetconfig.json",
        "http://",
        "https://",
        "tftp://",
        "{tftp}",
        "Varos",
        "Unknown",
        "time",
        "updatedTime",
        "settings",
        "name",
        "usageId",
        "key",
        "value",
        "access",
        "User",
        "Admin",
        "firmwareName",
        "LATEST",
        "Current",
        "firmwareParams",
        "firmwareVersion",
        "commonSettings",
        "modelSpecificSettings",
        "models",
        "modelFirmware",
        "latest",
        "templateConfiguration",
        "userConfiguration",
        "userId",
        "headsetInventory",
        "cameraInventory",
        "host",
        "dock",
        "accessory",
        "headset",
        "camera",
        "client",
        "serialNumber",
        "deviceName",
        "vendor",
        "model",
        "hostOSVersion",
        "connectionType",
        "connectionStatus",
        "Varos K30",
        "Varos K20",
        "connected",
        "[LIB-ERR]",
        "[KORM-ERR]",
        "[PARSING-ERR]",
        "[PLUGIN-ERR]",
        "[NETWORK-ERR]",
        "[SYSTEM-ERR]",
        "defaultheadsetconfig.json",
    };
    std::ifstream header(HEADSETMGMT_CONSTANTS_HEADER);
    ASSERT_TRUE(header.is_open());
    std::ostringstream content;
    content << header.rdbuf();
    const std::string source = content.str();

    // A definition begins with these words; its text is the next one in quotes.
    const std::string definition = "inline constexpr char ";
    std::vector<std::string> defined;
    for (std::size_t place = source.find(definition); place != std::string::npos;
         place = source.find(definition, place + 1)) {
        const std::size_t first = source.find('"', place) + 1;
        defined.push_back(source.substr(first, source.find('"', first) - first));
    }

    EXPECT_EQ(defined, expected);
}

}  // namespace
