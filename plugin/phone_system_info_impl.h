// SPDX-License-Identifier: Apache-2.0
// Information about the phone: constants, results of host functions, and facts that the host has
// set.

#pragma once

#include <string>
#include <vector>

#include "headsetmgmt/system_info.h"

#include "core/locks.h"

namespace headsetmgmt::config {

/// The facts that the host has set since the start; the others are constants or results of host
/// functions. Any thread.
class PhoneSystemInfoImpl : public SystemInfoInterface {
public:
    std::string get_host_client_type() override;
    std::string get_host_device_name() override;
    std::string get_host_serial_number() override;
    std::string get_host_model() override;
    std::string get_host_software_version() override;
    std::string get_host_hardware_version() override;
    std::string get_host_user_id() override;
    std::string get_host_os_version() override;
    std::string get_persistent_storage_location() override;
    std::string get_config_url() override;
    std::string get_inventory_post_url() override;
    std::string get_metrics_service_info_url() override;
    std::string get_korm_server(unsigned int index) override;
    std::string get_tftp_server(unsigned int index) override;
    std::vector<std::string> get_korm_servers() override;
    std::string to_string() override { return {}; }
    bool data_ready() override { return true; }
    ~PhoneSystemInfoImpl() override = default;

    /// These two append a server unless it is in the list. Servers are never removed.
    void addTftpServer(std::string server);
    void addKormServer(std::string server);

    /// These replace the earlier value.
    void setConfigUrl(std::string url);
    void setInventoryPostUrl(std::string url);
    void setServiceUrl(std::string url);
    void setUserId(std::string id);

    std::string getUserId() { return get_host_user_id(); }

private:
    std::string config_url GUARDED_BY(facts_mutex);
    std::string inventory_post_url GUARDED_BY(facts_mutex);
    std::string service_url GUARDED_BY(facts_mutex);
    std::vector<std::string> tftp_servers GUARDED_BY(facts_mutex);
    std::vector<std::string> korm_servers GUARDED_BY(facts_mutex);
    std::string user_id GUARDED_BY(facts_mutex);
    mutable Mutex facts_mutex;
};

}  // namespace headsetmgmt::config
