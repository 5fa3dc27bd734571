// SPDX-License-Identifier: Apache-2.0
// What the headers of the configuration manager promise, used with the types they promise. It is
// compiled and never run.

#include <map>
#include <string>
#include <type_traits>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config.h"
#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/executor.h"
#include "headsetmgmt/host_config_driver.h"
#include "headsetmgmt/types.h"

#include "config/config_accessory_params.h"
#include "config/config_manager_impl.h"
#include "tests/headers/declared.h"

namespace declared {

using headsetmgmt::AccessoryInfoInterface;
using headsetmgmt::ConfigParam;
using headsetmgmt::RequestStatus;
using headsetmgmt::TaskParametersInterface;
using headsetmgmt::config::ConfigAccessoryParams;
using headsetmgmt::config::ConfigInterface;
using headsetmgmt::config::ConfigManager;
using headsetmgmt::config::ConfigManagerImpl;
using headsetmgmt::config::ConfigureResponse;

// The interface: everything virtual may be overridden.

class Manager : public ConfigManager {
public:
    std::string initialize_accessory(const std::string& /*id*/,
                                     const AccessoryInfoInterface* /*info*/) override {
        return {};
    }
    bool configure_accessory(const std::string& /*id*/, std::string /*config_url*/) override {
        return true;
    }
    void remove_accessory(const std::string& /*id*/) override {}
    bool on_fetch_config_success(std::string& /*document*/) override { return true; }
    bool on_fetch_config_failure(int /*reason*/) override { return true; }
    bool reset_to_admin_defaults(const std::string& /*id*/) override { return true; }
    std::map<int, ConfigParam> retrieve_config(const std::string& /*id*/) override { return {}; }
    std::string retrieve_config(const std::string& /*id*/, int /*key*/) override { return {}; }
    ~Manager() override = default;
};

static_assert(std::is_abstract_v<ConfigManager>);
static_assert(std::has_virtual_destructor_v<ConfigManager>);
static_assert(std::is_base_of_v<ConfigManager, ConfigManagerImpl>);

void use_the_one_manager() {
    expect_type<ConfigManager*>(headsetmgmt::config::create_config_manager());
    headsetmgmt::config::delete_config_manager();
    expect_type<ConfigManagerImpl*>(ConfigManagerImpl::get_instance());
    ConfigManagerImpl::delete_instance();
}

void use_registry(ConfigManagerImpl& manager, const AccessoryInfoInterface* info,
                  ConfigInterface* config, const std::string& id) {
    expect_type<std::string>(manager.initialize_accessory(id, info));
    expect_type<bool>(manager.configure_accessory(id, std::string()));
    manager.remove_accessory(id);
    expect_type<bool>(manager.reset_to_admin_defaults(id));
    expect_type<std::map<int, ConfigParam>>(manager.retrieve_config(id));
    expect_type<std::string>(manager.retrieve_config(id, 32));
    expect_type<bool>(manager.update_config_from_host(id, id, 32, id));

    manager.add_config_object(id, config);
    expect_type<ConfigInterface*>(manager.get_config_object(id));
    expect_type<unsigned int>(manager.get_number_of_configs());
    expect_type<ConfigInterface*>(manager.get_accessory(id));
    expect_type<ConfigInterface*>(manager.create_accessory(id, info));
}

void use_run(ConfigManagerImpl& manager, ConfigInterface* config, TaskParametersInterface* params,
             std::string& document) {
    expect_type<bool>(manager.on_fetch_config_success(document));
    expect_type<bool>(manager.on_fetch_config_failure(404));
    manager.mark_config_object_pending(config);
    expect_type<ConfigInterface*>(manager.get_pending_config_object(0));
    expect_type<unsigned int>(manager.get_number_of_pending_configs());
    expect_type<bool>(manager.is_configure_accessory_pending());
    manager.set_configure_accessory_pending(true);
    manager.clean_up_pending_config_requests();
    const std::string url;
    expect_type<RequestStatus>(manager.fetch_config(url, document));
    manager.configure_accessory_task(params);
}

void use_task_parameters(ConfigInterface* config) {
    ConfigAccessoryParams params(config);
    const ConfigAccessoryParams copy(params);
    expect_type<TaskParametersInterface*>(copy.clone());
    expect_type<int>(copy.get_type());
    expect_type<int>(params.check_status());
    expect_type<unsigned int>(copy.get_timeout());
    expect_type<unsigned int>(copy.get_defer_time());
    expect_type<ConfigInterface*>(params.get_config());
}

static_assert(std::is_base_of_v<TaskParametersInterface, ConfigAccessoryParams>);

void use_response(RequestStatus status) {
    ConfigureResponse response(status);
    expect_type<RequestStatus&>(response.status);
    response = ConfigureResponse(1);
}

}  // namespace declared
