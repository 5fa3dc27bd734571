// SPDX-License-Identifier: Apache-2.0
// Texts of the configuration document, the inventory report, the URLs and the log lines.

#pragma once

/// The order is fixed. A constant has the name of its text; the prefixes `key_`, `access_` and
/// `tag_` say where an ambiguous word is used.
namespace headsetmgmt::constants {

// File name of the remote default configuration document.
inline constexpr char default_config_file[] = "defaultheadsetconfig.json";

// URL scheme prefixes, as in the templates.
inline constexpr char http_prefix[] = "http://";
inline constexpr char https_prefix[] = "https://";
inline constexpr char tftp_prefix[] = "tftp://";

// URL template token that stands for a TFTP server.
inline constexpr char tftp_token[] = "{tftp}";

// The maker's vendor name.
inline constexpr char varos[] = "Varos";

// Text for an unknown fact.
inline constexpr char unknown[] = "Unknown";

// Keys and key values of the configuration document.
inline constexpr char key_time[] = "time";
inline constexpr char key_updated_time[] = "updatedTime";
inline constexpr char key_settings[] = "settings";
inline constexpr char key_name[] = "name";
inline constexpr char key_usage_id[] = "usageId";
inline constexpr char key_key[] = "key";
inline constexpr char key_value[] = "value";
inline constexpr char key_access[] = "access";
inline constexpr char access_user[] = "User";
inline constexpr char access_admin[] = "Admin";
inline constexpr char key_firmware_name[] = "firmwareName";
inline constexpr char firmware_latest[] = "LATEST";
inline constexpr char firmware_current[] = "Current";
inline constexpr char key_firmware_params[] = "firmwareParams";
inline constexpr char key_firmware_version[] = "firmwareVersion";
inline constexpr char key_common_settings[] = "commonSettings";
inline constexpr char key_model_specific_settings[] = "modelSpecificSettings";
inline constexpr char key_models[] = "models";
inline constexpr char key_model_firmware[] = "modelFirmware";
inline constexpr char key_latest[] = "latest";
inline constexpr char key_template_configuration[] = "templateConfiguration";
inline constexpr char key_user_configuration[] = "userConfiguration";
inline constexpr char key_user_id[] = "userId";

// Keys of the inventory report.
inline constexpr char key_headset_inventory[] = "headsetInventory";
inline constexpr char key_camera_inventory[] = "cameraInventory";
inline constexpr char key_host[] = "host";
inline constexpr char key_dock[] = "dock";
inline constexpr char key_accessory[] = "accessory";
inline constexpr char key_headset[] = "headset";
inline constexpr char key_camera[] = "camera";
inline constexpr char key_client[] = "client";
inline constexpr char key_serial_number[] = "serialNumber";
inline constexpr char key_device_name[] = "deviceName";
inline constexpr char key_vendor[] = "vendor";
inline constexpr char key_model[] = "model";
inline constexpr char key_host_os_version[] = "hostOSVersion";
inline constexpr char key_connection_type[] = "connectionType";
inline constexpr char key_connection_status[] = "connectionStatus";

// The maker's two headset models.
inline constexpr char varos_k30[] = "Varos K30";
inline constexpr char varos_k20[] = "Varos K20";

// Connection status of an attached accessory.
inline constexpr char connected[] = "connected";

// Classes of failure in log lines, written directly after the operation's name.
inline constexpr char tag_lib_err[] = "[LIB-ERR]";          // the library's own state
inline constexpr char tag_korm_err[] = "[KORM-ERR]";        // unusable content from a server
inline constexpr char tag_parsing_err[] = "[PARSING-ERR]";  // a document that cannot be parsed
inline constexpr char tag_plugin_err[] = "[PLUGIN-ERR]";    // missing input from the host
inline constexpr char tag_network_err[] = "[NETWORK-ERR]";  // reserved: no operation writes it
inline constexpr char tag_system_err[] = "[SYSTEM-ERR]";    // reserved: no operation writes it

// Second name of the configuration document's file name.
inline constexpr char remote_config_file[] = "defaultheadsetconfig.json";

}  // namespace headsetmgmt::constants
