// SPDX-License-Identifier: Apache-2.0
// A phone whose facts the test sets.

#pragma once

#include <string>
#include <vector>

#include "headsetmgmt/system_info.h"

#include "support/nth_call.h"

namespace headsetmgmt::test_support {

/// Answers its public members, which begin empty. They are set while nobody asks; asking is for any
/// thread.
class FakeSystemInfo : public SystemInfoInterface {
public:
    std::string client_type;
    std::string device_name;
    std::string serial_number;
    std::string model;
    std::string software_version;
    std::string hardware_version;
    std::string user_id;
    std::string os_version;
    std::string persistent_storage_location;
    std::string config_url;
    std::string inventory_post_url;
    std::string metrics_service_info_url;
    std::vector<std::string> korm_servers;
    std::vector<std::string> tftp_servers;
    std::string text;  ///< what `to_string` answers
    bool ready = true;

    /// Throws `std::runtime_error` "fake system info" from the `n`th question from now, 1 being the
    /// next.
    void throw_at(int n) { fault.choose(n); }

    std::string get_host_client_type() override { return answer(client_type); }
    std::string get_host_device_name() override { return answer(device_name); }
    std::string get_host_serial_number() override { return answer(serial_number); }
    std::string get_host_model() override { return answer(model); }
    std::string get_host_software_version() override { return answer(software_version); }
    std::string get_host_hardware_version() override { return answer(hardware_version); }
    std::string get_host_user_id() override { return answer(user_id); }
    std::string get_host_os_version() override { return answer(os_version); }
    std::string get_persistent_storage_location() override {
        return answer(persistent_storage_location);
    }
    std::string get_config_url() override { return answer(config_url); }
    std::string get_inventory_post_url() override { return answer(inventory_post_url); }
    std::string get_metrics_service_info_url() override { return answer(metrics_service_info_url); }
    std::string get_korm_server(unsigned int index) override;
    std::string get_tftp_server(unsigned int index) override;
    std::vector<std::string> get_korm_servers() override { return answer(korm_servers); }
    std::string to_string() override { return answer(text); }
    bool data_ready() override { return answer(ready); }

private:
    void fail_if_chosen();

    template <typename T>
    T answer(const T& fact) {
        fail_if_chosen();
        return fact;
    }

    NthCall fault;
};

}  // namespace headsetmgmt::test_support
