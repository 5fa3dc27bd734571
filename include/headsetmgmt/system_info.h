// SPDX-License-Identifier: Apache-2.0
// Information about the phone.

#pragma once

#include <string>
#include <vector>

namespace headsetmgmt {

/// Describes the phone: identity, versions, servers, URL templates, user.
///
/// Any thread, several at once. Made and deleted by the plug-in; everyone else borrows it through
/// `Plugins`. Texts of unknown facts are empty.
class SystemInfoInterface {
public:
    virtual std::string get_host_client_type() = 0;
    virtual std::string get_host_device_name() = 0;
    virtual std::string get_host_serial_number() = 0;
    virtual std::string get_host_model() = 0;
    virtual std::string get_host_software_version() = 0;
    virtual std::string get_host_hardware_version() = 0;
    virtual std::string get_host_user_id() = 0;
    virtual std::string get_host_os_version() { return {}; }
    virtual std::string get_persistent_storage_location() = 0;

    /// Template of the configuration URL; may hold "{tftp}" and "{userid}".
    virtual std::string get_config_url() = 0;
    /// Template of the URL that takes inventory reports; may hold "{korm}".
    virtual std::string get_inventory_post_url() = 0;
    virtual std::string get_metrics_service_info_url() = 0;

    /// The call-control server at `index`, counted from 0; empty past the last.
    virtual std::string get_korm_server(unsigned int index) = 0;
    /// The TFTP server at `index`, counted from 0; empty past the last.
    virtual std::string get_tftp_server(unsigned int index) = 0;
    /// All call-control servers, in the host's order.
    virtual std::vector<std::string> get_korm_servers() = 0;

    virtual std::string to_string() { return {}; }

    /// Whether the facts are complete.
    virtual bool data_ready() = 0;

    // Last among the virtual operations, where the binary interface has it.
    virtual ~SystemInfoInterface() = default;
};

}  // namespace headsetmgmt
