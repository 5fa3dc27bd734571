// SPDX-License-Identifier: Apache-2.0
// The plug-in object's start, stop and log.

#include "plugin/phone_plugin_impl.h"

#include <utility>

#include "plugin/host_call.h"
#include "plugin/http_dispatcher_impl.h"
#include "plugin/phone_config_driver_impl.h"
#include "plugin/phone_system_info_impl.h"
#include "runtime/mutex.h"

namespace headsetmgmt::plugin {

config::ConfigManager* PhonePluginImpl::config_mgr_ = nullptr;
log::HostLogInterface* PhonePluginImpl::phone_log_ = nullptr;
dispatcher::DispatcherInterface* PhonePluginImpl::dispatcher_ = nullptr;
config::HostConfigDriverInterface* PhonePluginImpl::phone_config_driver_ = nullptr;
SystemInfoInterface* PhonePluginImpl::phone_system_info_ = nullptr;
ExecutorImpl* PhonePluginImpl::executor_ = nullptr;
MutexFactoryInterface* PhonePluginImpl::mutex_factory_ = nullptr;

namespace {

template <typename T>
void delete_and_clear(T*& object) {
    delete std::exchange(object, nullptr);
}

}  // namespace

PhonePluginImpl::~PhonePluginImpl() {
    reset_headsetmgmt_lib();
}

int PhonePluginImpl::map_to_host_log_level(log::LogLevel level) const {
    switch (level) {
    case log::LogLevel::critical:
        return 1;
    case log::LogLevel::error:
        return 2;
    case log::LogLevel::warning:
        return 3;
    case log::LogLevel::info:
        return 4;
    default:
        return 5;
    }
}

void PhonePluginImpl::print(log::LogLevel /*level*/, const std::string& text) {
    debug(text);
}

void PhonePluginImpl::debug(const char* text) noexcept {
    const HostLogCallback callback = log_callback;
    if (callback == nullptr) {
        return;
    }
    constexpr int host_level = 5;
    const HostCall host_call;
    callback(host_level, text);
}

void PhonePluginImpl::setLogCB(HostLogCallback callback) {
    log_callback = callback;
}

bool PhonePluginImpl::init_headsetmgmt_lib(const std::string& /*phone_model*/,
                                           const std::string& /*phone_version*/,
                                           const std::string& /*storage_path*/) {
    if (config_mgr_ != nullptr) {
        return true;
    }
    debug("init_headsetmgmt_lib.\n");
    reset_headsetmgmt_lib();
    init_plugins();
    if (!executor_->run("Headset-mgmt task thread", 0, 0)) {
        debug("Failed to start task thread\n");
        return false;
    }
    init(plugins);
    config_mgr_ = config::create_config_manager();
    if (config_mgr_ == nullptr) {
        // Not reached: the core returns a manager or throws.
        debug("Failed to create config_manager\n");
        return false;
    }
    return true;
}

void PhonePluginImpl::init_plugins() {
    phone_log_ = this;
    phone_system_info_ = new config::PhoneSystemInfoImpl();
    dispatcher_ = new dispatcher::HttpDispatcherImpl();
    phone_config_driver_ = new config::PhoneConfigDriverImpl();
    executor_ = new ExecutorImpl(this);
    mutex_factory_ = new MutexFactoryImpl();

    plugins.log = phone_log_;
    plugins.dispatcher = dispatcher_;
    plugins.config_driver = phone_config_driver_;
    plugins.system_info = phone_system_info_;
    plugins.executor = executor_;
    plugins.mutex_factory = mutex_factory_;
}

void PhonePluginImpl::stop_headset_mgmt() {
    debug("stop headset mgmt\n");
    end_worker();
    config::delete_config_manager();
    // Deletes the manager again, which does nothing.
    reset_headsetmgmt_lib();
}

bool PhonePluginImpl::reset_headsetmgmt_lib() {
    // Before anything that a task may use is deleted.
    end_worker();
    if (config_mgr_ != nullptr) {
        config::delete_config_manager();
        config_mgr_ = nullptr;
    }
    delete_and_clear(phone_system_info_);
    delete_and_clear(dispatcher_);
    delete_and_clear(phone_config_driver_);
    // Before the factory: deletes the tasks that never ran, whose locks belong to the factory.
    delete_and_clear(executor_);
    delete_and_clear(mutex_factory_);
    return true;
}

void PhonePluginImpl::dismiss_worker() {
    if (executor_ != nullptr) {
        executor_->requestExit();
        executor_->detach();
    }
}

void PhonePluginImpl::end_worker() {
    if (executor_ != nullptr) {
        executor_->requestExit();
        executor_->join();
    }
}

}  // namespace headsetmgmt::plugin
