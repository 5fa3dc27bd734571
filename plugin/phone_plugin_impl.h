// SPDX-License-Identifier: Apache-2.0
// The plug-in object: the phone's side of the library, and the owner of everything that a start
// makes.

#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/log.h"
#include "headsetmgmt/phone/host_types.h"
#include "headsetmgmt/plugins.h"

#include "runtime/executor_impl.h"

namespace headsetmgmt::plugin {

/// Starts and stops the library, processes the host's events and forwards the library's log lines.
///
/// There is one object. Start, stop and destruction are for one thread at a time, with no event
/// under way; plugin/lifecycle.h ensures that. Events and log lines are for any thread.
class PhonePluginImpl : public log::HostLogInterface {
public:
    PhonePluginImpl() = default;

    /// Stops the library if it is started.
    ~PhonePluginImpl() override;

    PhonePluginImpl(const PhonePluginImpl&) = delete;
    PhonePluginImpl& operator=(const PhonePluginImpl&) = delete;

    /// The host's levels are not monotone: notice is 5, info 4.
    int map_to_host_log_level(log::LogLevel level) const override;

    /// Passes the line to the callback, always at host level 5: the mapping above is not applied.
    /// The line is not copied, so it also arrives when memory has run out.
    void print(log::LogLevel level, const std::string& text) override;

    /// Passes a line of the plug-in to the callback at host level 5. Without a callback the line is
    /// lost; a callback that throws ends the process. A literal is not copied, so a stop can write
    /// its line when memory has run out.
    void debug(const char* text) noexcept;

    /// The same for a composed line.
    void debug(const std::string& text) noexcept { debug(text.c_str()); }

    /// Registers the callback that takes all later lines; null for none.
    void setLogCB(HostLogCallback callback);

    // Start and stop (phone_plugin_impl.cpp).

    /// Starts the library; the three texts are not used. True also when it is already started.
    bool init_headsetmgmt_lib(const std::string& phone_model, const std::string& phone_version,
                              const std::string& storage_path);

    /// Stops the library.
    void stop_headset_mgmt();

    /// Ends the worker and deletes everything that a start made. Always true.
    bool reset_headsetmgmt_lib();

    /// Makes the interfaces of the core but the log, which is this object, and fills the plug-in
    /// record.
    void init_plugins();

    /// Requests that the worker, if there is one, ends after its current task. It is never joined.
    void dismiss_worker();

    // Events (host_events.cpp). A null text counts as empty.

    /// An accessory was attached. Whether its configuration is under way.
    bool configure_headset(const std::shared_ptr<AccessoryCache>& cache);

    /// Queues an accessory's inventory report.
    void sendInventory(const std::shared_ptr<AccessoryCache>& cache);

    /// Stores the host's URLs, servers (three of each kind) and user; empty ones are ignored. False
    /// when the library is not started.
    bool onHeadsetConfigUrl(const char* config_url, const char* inventory_post_url,
                            const char* service_url, const char** tftp_servers,
                            const char** korm_servers, const char* user_id);

    /// An accessory was removed. False when the library is not started.
    bool removePeripheral(const char* device_id);

    /// The usage id with exactly the display name `key`; 0 when there is none.
    int keyToUsageId(const std::string& key);

    /// Always false; nothing is recorded.
    bool updateLocalConfig(const char* device_id, int usage_id, const std::string& value);

    /// The answer to a fetch; any status but 200 is a failure.
    void onHttpResponse(const char* body, int status);

    /// Sets `value` to the setting's name; whether it is not empty.
    bool retrieveConfig(const char* device_id, int usage_id, std::string& value);

    /// Sends all settings to the accessory again. False when the library is not started or the
    /// accessory not known.
    bool factory_reset(const char* device_id);

    // Made by a start; null after a stop. Owned and written only by the object; others may read
    // them between a start and the stop.
    static config::ConfigManager* config_mgr_;
    static log::HostLogInterface* phone_log_;  // the object itself; not owned, stays set
    static dispatcher::DispatcherInterface* dispatcher_;
    static config::HostConfigDriverInterface* phone_config_driver_;
    static SystemInfoInterface* phone_system_info_;
    static ExecutorImpl* executor_;
    static MutexFactoryInterface* mutex_factory_;

private:
    void end_worker();

    Plugins plugins;
    std::atomic<HostLogCallback> log_callback{nullptr};
};

}  // namespace headsetmgmt::plugin
