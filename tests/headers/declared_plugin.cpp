// SPDX-License-Identifier: Apache-2.0
// What the headers of the phone promise, used with the types they promise. It is compiled and never
// run.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/dispatcher.h"
#include "headsetmgmt/host_config_driver.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/mutex.h"
#include "headsetmgmt/phone/flat_interface.h"
#include "headsetmgmt/phone/host_functions.h"
#include "headsetmgmt/phone/host_types.h"
#include "headsetmgmt/system_info.h"

#include "plugin/accessory_info_impl.h"
#include "plugin/file_dispatchers.h"
#include "plugin/http_dispatcher_impl.h"
#include "plugin/phone_config_driver_impl.h"
#include "plugin/phone_plugin_impl.h"
#include "plugin/phone_system_info_impl.h"
#include "runtime/executor_impl.h"
#include "tests/headers/declared.h"

namespace declared {

using headsetmgmt::AccessoryInfoImpl;
using headsetmgmt::AccessoryInfoInterface;
using headsetmgmt::SystemInfoInterface;
using headsetmgmt::config::ConfigureResponse;
using headsetmgmt::config::HostConfigDriverInterface;
using headsetmgmt::config::PhoneConfigDriverImpl;
using headsetmgmt::config::PhoneSystemInfoImpl;
using headsetmgmt::dispatcher::DispatcherInterface;
using headsetmgmt::dispatcher::FileDispatcherImpl;
using headsetmgmt::dispatcher::HttpDispatcherImpl;
using headsetmgmt::dispatcher::RequestContext;
using headsetmgmt::dispatcher::TftpDispatcherImpl;
using headsetmgmt::plugin::PhonePluginImpl;

// What the library and its host call each other by.

void use_flat_interface() {
    expect_type<bool (*)(void (*)(int, const char*))>(&create_headset_mgmt);
    expect_type<bool (*)(const char*, const char*, const char*)>(&start_headset_mgmt);
    expect_type<void (*)()>(&stop_headset_mgmt);
    expect_type<bool (*)(const char*, const char*, const char*, const char**, const char**,
                         const char*)>(&setHeadsetConfigUrl);
    expect_type<bool (*)(const char*, CONFIG_SETTING_USAGE_ID, int)>(&update_config);
    expect_type<bool (*)(const char*, CONFIG_SETTING_USAGE_ID, int*)>(&retrieve_config);
    expect_type<void (*)(const char*, int)>(&httpResponse);
    expect_type<bool (*)(const char*)>(&factory_reset);
    expect_type<bool (*)(const char*)>(&remove_peripheral);
    expect_type<bool (*)(std::shared_ptr<AccessoryCache>)>(&configure_headset);
    expect_type<void (*)(std::shared_ptr<AccessoryCache>)>(&send_inventory);
}

void use_host_functions(const char* text) {
    expect_type<const char*>(get_host_serial_num());
    expect_type<const char*>(get_host_os_ver());
    expect_type<const char*>(get_orvik_ver());
    apply_changes(text, text, 32, text);
    const bool upgraded = check_firmware_upgrade(text);
    static_cast<void>(upgraded);
    request_firmware_upgrade(text, text, text);
    httpRequest(static_cast<HttpRequestType>(2), text, text);
}

static_assert(offsetof(AccessoryCache, device_id) < offsetof(AccessoryCache, accessory_type));
static_assert(offsetof(AccessoryCache, accessory_type) < offsetof(AccessoryCache, vendor_id));
static_assert(offsetof(AccessoryCache, vendor_id) < offsetof(AccessoryCache, software_version));
static_assert(offsetof(AccessoryCache, software_version) <
              offsetof(AccessoryCache, hardware_version));
static_assert(offsetof(AccessoryCache, hardware_version) < offsetof(AccessoryCache, model));
static_assert(offsetof(AccessoryCache, model) < offsetof(AccessoryCache, serial_number));
static_assert(offsetof(AccessoryCache, serial_number) < offsetof(AccessoryCache, vendor));
static_assert(offsetof(AccessoryCache, vendor) < offsetof(AccessoryCache, dock_serial_number));
static_assert(offsetof(AccessoryCache, dock_serial_number) < offsetof(AccessoryCache, dock_model));
static_assert(offsetof(AccessoryCache, dock_model) <
              offsetof(AccessoryCache, dongle_serial_number));
static_assert(offsetof(AccessoryCache, dongle_serial_number) <
              offsetof(AccessoryCache, dongle_model));
static_assert(offsetof(AccessoryCache, dongle_model) < offsetof(AccessoryCache, dongle_version));
static_assert(offsetof(AccessoryCache, dongle_version) < offsetof(AccessoryCache, connection_type));
static_assert(offsetof(AccessoryCache, connection_type) <
              offsetof(AccessoryCache, connection_status));

void use_host_record() {
    AccessoryCache cache;
    expect_type<std::string&>(cache.device_id);
    expect_type<std::int32_t&>(cache.accessory_type);
    expect_type<std::int32_t&>(cache.vendor_id);
    expect_type<std::string&>(cache.software_version);
    expect_type<std::string&>(cache.hardware_version);
    expect_type<std::string&>(cache.model);
    expect_type<std::string&>(cache.serial_number);
    expect_type<std::string&>(cache.vendor);
    expect_type<std::string&>(cache.dock_serial_number);
    expect_type<std::string&>(cache.dock_model);
    expect_type<std::string&>(cache.dongle_serial_number);
    expect_type<std::string&>(cache.dongle_model);
    expect_type<std::string&>(cache.dongle_version);
    expect_type<std::string&>(cache.connection_type);
    expect_type<std::string&>(cache.connection_status);
}

// The plug-in object.

static_assert(std::is_base_of_v<headsetmgmt::log::HostLogInterface, PhonePluginImpl>);

void use_static_members() {
    expect_type<headsetmgmt::config::ConfigManager*&>(PhonePluginImpl::config_mgr_);
    expect_type<headsetmgmt::log::HostLogInterface*&>(PhonePluginImpl::phone_log_);
    expect_type<DispatcherInterface*&>(PhonePluginImpl::dispatcher_);
    expect_type<HostConfigDriverInterface*&>(PhonePluginImpl::phone_config_driver_);
    expect_type<SystemInfoInterface*&>(PhonePluginImpl::phone_system_info_);
    expect_type<headsetmgmt::ExecutorImpl*&>(PhonePluginImpl::executor_);
    expect_type<headsetmgmt::MutexFactoryInterface*&>(PhonePluginImpl::mutex_factory_);
}

void use_life_cycle(void (*callback)(int, const char*), const std::string& text) {
    const std::shared_ptr<PhonePluginImpl> plugin = std::make_shared<PhonePluginImpl>();
    plugin->setLogCB(callback);
    expect_type<bool>(plugin->init_headsetmgmt_lib(text, text, text));
    plugin->stop_headset_mgmt();
    expect_type<bool>(plugin->reset_headsetmgmt_lib());
    plugin->init_plugins();
    plugin->debug(text);
    plugin->debug(std::string("composed"));
    plugin->debug("literal");
    plugin->print(headsetmgmt::log::info, text);
    expect_type<int>(plugin->map_to_host_log_level(headsetmgmt::log::debug));
}

void use_events(PhonePluginImpl& plugin, const std::shared_ptr<AccessoryCache>& cache,
                const char* text, const char** servers) {
    expect_type<bool>(plugin.configure_headset(cache));
    plugin.sendInventory(cache);
    expect_type<bool>(plugin.onHeadsetConfigUrl(text, text, text, servers, servers, text));
    expect_type<bool>(plugin.removePeripheral(text));
    expect_type<int>(plugin.keyToUsageId(std::string("Sidetone")));
    expect_type<bool>(plugin.updateLocalConfig(text, 32, std::string("1")));
    plugin.onHttpResponse(text, 200);
    std::string value;
    expect_type<bool>(plugin.retrieveConfig(text, 32, value));
    expect_type<bool>(plugin.factory_reset(text));
}

// The facts of the phone: everything virtual may be overridden.

class Phone : public SystemInfoInterface {
public:
    std::string get_host_client_type() override { return {}; }
    std::string get_host_device_name() override { return {}; }
    std::string get_host_serial_number() override { return {}; }
    std::string get_host_model() override { return {}; }
    std::string get_host_software_version() override { return {}; }
    std::string get_host_hardware_version() override { return {}; }
    std::string get_host_user_id() override { return {}; }
    std::string get_host_os_version() override { return {}; }
    std::string get_persistent_storage_location() override { return {}; }
    std::string get_config_url() override { return {}; }
    std::string get_inventory_post_url() override { return {}; }
    std::string get_metrics_service_info_url() override { return {}; }
    std::string get_korm_server(unsigned int /*index*/) override { return {}; }
    std::string get_tftp_server(unsigned int /*index*/) override { return {}; }
    std::vector<std::string> get_korm_servers() override { return {}; }
    std::string to_string() override { return {}; }
    bool data_ready() override { return true; }
    ~Phone() override = default;
};

static_assert(std::is_abstract_v<SystemInfoInterface>);
static_assert(std::has_virtual_destructor_v<SystemInfoInterface>);
static_assert(std::is_base_of_v<SystemInfoInterface, PhoneSystemInfoImpl>);

void use_system_info() {
    PhoneSystemInfoImpl phone;
    phone.addTftpServer(std::string("192.0.2.1"));
    phone.addKormServer(std::string("192.0.2.2"));
    phone.setConfigUrl(std::string("http://192.0.2.1/"));
    phone.setInventoryPostUrl(std::string("http://192.0.2.2/"));
    phone.setServiceUrl(std::string("http://192.0.2.3/"));
    phone.setUserId(std::string("user-17"));
    expect_type<std::string>(phone.getUserId());
    expect_type<std::string>(phone.get_tftp_server(0U));
    expect_type<std::string>(phone.get_korm_server(0U));
    expect_type<std::vector<std::string>>(phone.get_korm_servers());
    expect_type<std::string>(phone.to_string());
    expect_type<bool>(phone.data_ready());
}

// The way to the devices: everything virtual may be overridden.

class Driver : public HostConfigDriverInterface {
public:
    ~Driver() override = default;
    bool apply_config_to_device(const std::string& /*accessory_id*/, const std::string& /*name*/,
                                int /*usage_id*/, const std::string& /*value*/) const override {
        return true;
    }
    bool check_legacy_upgrade(const std::string& /*accessory_id*/) const override { return true; }
    bool request_upgrade(const std::string& /*accessory_id*/, const std::string& /*version*/,
                         const std::string& /*firmware_name*/) const override {
        return true;
    }
    void on_failure(const std::string& /*accessory_id*/,
                    ConfigureResponse /*response*/) const override {}
    void on_pending(const std::string& /*accessory_id*/,
                    ConfigureResponse /*response*/) const override {}
};

static_assert(std::is_abstract_v<HostConfigDriverInterface>);
static_assert(std::has_virtual_destructor_v<HostConfigDriverInterface>);
static_assert(std::is_base_of_v<HostConfigDriverInterface, PhoneConfigDriverImpl>);

void use_config_driver(const std::string& text) {
    PhoneConfigDriverImpl driver;
    const PhoneConfigDriverImpl& constant_driver = driver;
    expect_type<bool>(constant_driver.apply_config_to_device(text, text, 32, text));
    expect_type<bool>(constant_driver.request_upgrade(text, text, text));
    constant_driver.on_failure(text, ConfigureResponse(1));
    constant_driver.on_pending(text, ConfigureResponse(2));
    expect_type<bool>(driver.check_legacy_upgrade(text));
    // Two operations, of which the driver's own overrides nothing.
    expect_type<bool (PhoneConfigDriverImpl::*)(const std::string&)>(
        static_cast<bool (PhoneConfigDriverImpl::*)(const std::string&)>(
            &PhoneConfigDriverImpl::check_legacy_upgrade));
    const HostConfigDriverInterface& interface = driver;
    expect_type<bool>(interface.check_legacy_upgrade(text));
}

// Requests: everything virtual may be overridden.

static_assert(offsetof(RequestContext, url) < offsetof(RequestContext, method));
static_assert(offsetof(RequestContext, method) < offsetof(RequestContext, requester));
static_assert(offsetof(RequestContext, requester) < offsetof(RequestContext, body));
static_assert(offsetof(RequestContext, body) < offsetof(RequestContext, response_code));
static_assert(offsetof(RequestContext, response_code) < offsetof(RequestContext, extra));

class Dispatcher : public DispatcherInterface {
public:
    ~Dispatcher() override = default;
    int push(RequestContext* /*context*/) const override { return 0; }
    int get(RequestContext* /*context*/, std::string& /*document*/) const override { return 0; }
};

static_assert(std::is_abstract_v<DispatcherInterface>);
static_assert(std::has_virtual_destructor_v<DispatcherInterface>);
static_assert(std::is_base_of_v<DispatcherInterface, HttpDispatcherImpl>);
static_assert(!std::is_base_of_v<DispatcherInterface, FileDispatcherImpl>);
static_assert(!std::is_base_of_v<DispatcherInterface, TftpDispatcherImpl>);

void use_dispatchers(std::string& document) {
    RequestContext context;
    expect_type<std::string&>(context.url);
    expect_type<std::string&>(context.method);
    expect_type<std::string&>(context.requester);
    expect_type<std::string&>(context.body);
    expect_type<std::int32_t&>(context.response_code);
    expect_type<std::string&>(context.extra);

    const HttpDispatcherImpl http;
    expect_type<int>(http.push(&context));
    expect_type<int>(http.get(&context, document));
    const FileDispatcherImpl file;
    expect_type<int>(file.push(document, document));
    expect_type<int>(file.get(std::string("name"), document));
    const TftpDispatcherImpl tftp;
    expect_type<int>(tftp.push(document, document));
    expect_type<int>(tftp.get(std::string("name"), document));
}

static_assert(::HTTP_REQUEST_GET == 0);
static_assert(::HTTP_REQUEST_POST == 2);

// The accessory's facts: everything virtual may be overridden.

class Accessory : public AccessoryInfoInterface {
public:
    headsetmgmt::ACCESSORY_TYPE get_type() const override { return headsetmgmt::HEADSET; }
    AccessoryInfoInterface* clone() const override { return nullptr; }
    std::string get_vendor(SystemInfoInterface* /*system_info*/) override { return {}; }
    std::string get_model() override { return {}; }
    std::string get_serial_number(SystemInfoInterface* /*system_info*/) override { return {}; }
    std::string get_software_version() override { return {}; }
    std::string get_hardware_version() override { return {}; }
    std::string get_dock_serial_number() override { return {}; }
    std::string get_dock_model() override { return {}; }
    std::string get_dongle_serial_number() override { return {}; }
    std::string get_dongle_model() override { return {}; }
    std::string get_dongle_version() override { return {}; }
    std::string get_connection_type() override { return {}; }
    std::string get_connection_status() override { return {}; }
    std::string to_string() override { return {}; }
    bool data_ready() override { return true; }
    bool firmware_data_ready() override { return true; }
    bool is_varos_vid() override { return true; }
    void set_connection(const std::string& /*type*/, const std::string& /*status*/) override {}
    void reset() override {}
    ~Accessory() override = default;
};

static_assert(std::is_abstract_v<AccessoryInfoInterface>);
static_assert(std::has_virtual_destructor_v<AccessoryInfoInterface>);
static_assert(std::is_base_of_v<AccessoryInfoInterface, AccessoryInfoImpl>);

void use_accessory(const std::string& text) {
    AccessoryInfoImpl accessory(headsetmgmt::CAMERA, text, text, text, text, text, text, text, text,
                                text, text, text, 0xF055);
    const AccessoryInfoImpl copy(accessory);
    expect_type<std::string>(accessory.device_id());
    expect_type<headsetmgmt::ACCESSORY_TYPE>(copy.get_type());
    expect_type<AccessoryInfoInterface*>(copy.clone());
    expect_type<std::string>(accessory.get_vendor(nullptr));
    expect_type<std::string>(accessory.get_serial_number(nullptr));
    expect_type<std::string>(accessory.to_string());
    expect_type<bool>(accessory.data_ready());
    expect_type<bool>(accessory.firmware_data_ready());
    expect_type<bool>(accessory.is_varos_vid());
    accessory.set_connection(text, text);
    accessory.reset();
}

}  // namespace declared
