// SPDX-License-Identifier: Apache-2.0
// The library's registry of configuration objects, and its configuration run.

#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "headsetmgmt/config.h"
#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/executor.h"
#include "headsetmgmt/types.h"

#include "core/owners.h"

namespace headsetmgmt::config {

/// The one configuration manager.
///
/// Any thread. Every operation holds the (recursive) registry mutex from its first to its last use
/// of a registered object, also while that object calls the host. The worker uses copies and holds
/// no lock during a request. A removed object is deleted when the outermost operation of the thread
/// that holds the registry ends: a host function or the log callback may remove the accessory that
/// is in use. Lock order: registry, flag, then those of the objects and the executor.
class ConfigManagerImpl : public ConfigManager {
public:
    /// The instance, made by the first call; throws `std::runtime_error` "plugins hasn't been
    /// initialized properly" when no complete plug-in record is installed.
    static ConfigManagerImpl* get_instance();

    /// Deletes the instance if there is one.
    static void delete_instance();

    std::string initialize_accessory(const std::string& id,
                                     const AccessoryInfoInterface* info) override;
    bool configure_accessory(const std::string& id, std::string config_url) override;
    void remove_accessory(const std::string& id) override;
    bool on_fetch_config_success(std::string& document) override;
    bool on_fetch_config_failure(int reason) override;
    bool reset_to_admin_defaults(const std::string& id) override;
    std::map<int, ConfigParam> retrieve_config(const std::string& id) override;
    std::string retrieve_config(const std::string& id, int key) override;

    /// Records a setting that was changed on the phone. False when the accessory is not known or
    /// the object threw.
    bool update_config_from_host(const std::string& id, const std::string& name, int usage_id,
                                 const std::string& value);

    // The registry. A returned object is valid only while the caller's thread is inside an
    // operation of the manager.

    /// Takes ownership of `config`. An object that has this id is replaced, not deleted.
    void add_config_object(const std::string& id, ConfigInterface* config);
    ConfigInterface* get_config_object(const std::string& id);
    unsigned int get_number_of_configs();
    ConfigInterface* get_accessory(const std::string& id);
    ConfigInterface* create_accessory(const std::string& id, const AccessoryInfoInterface* info);

    // The configuration run.

    /// Fetches the document for the pending set. Worker.
    void configure_accessory_task(TaskParametersInterface* params);

    /// Requests the document from the dispatcher. Worker.
    RequestStatus fetch_config(const std::string& url, std::string& document);

    void mark_config_object_pending(ConfigInterface* config);

    /// The object at `index`, in the order of addresses; null past the last.
    ConfigInterface* get_pending_config_object(int index);
    unsigned int get_number_of_pending_configs();
    bool is_configure_accessory_pending();
    void set_configure_accessory_pending(bool pending);

    /// Ends a run: clears flag and pending set under one hold of the registry, then logs it.
    void clean_up_pending_config_requests();

protected:
    ConfigManagerImpl();
    ~ConfigManagerImpl() override;

private:
    /// Holds the registry mutex, which guards every registered object, for the length of a scope.
    class SCOPED_CAPABILITY RegistryHold {
    public:
        explicit RegistryHold(ConfigManagerImpl& manager) ACQUIRE(manager.registry_mutex);
        ~RegistryHold() RELEASE();

        RegistryHold(const RegistryHold&) = delete;
        RegistryHold& operator=(const RegistryHold&) = delete;

    private:
        ConfigManagerImpl& owner;
    };

    void delete_objects();

    ConfigInterface* find(const std::string& id) REQUIRES(registry_mutex);
    ConfigInterface* find_accessory(const std::string& id) REQUIRES(registry_mutex);
    bool is_registered(const std::string& id, const ConfigInterface* config) const
        REQUIRES(registry_mutex);
    std::size_t forget(std::map<std::string, ConfigInterface*>::iterator entry)
        REQUIRES(registry_mutex);

    long fetches_queued() const REQUIRES(registry_mutex);
    void queue_fetch(ConfigInterface* config) REQUIRES(registry_mutex);
    void end_run_without_fetch();
    void request_document(ConfigInterface& config, RequestStatus& status);
    std::vector<std::string> hand_out(const std::string& document) REQUIRES(registry_mutex);
    void hand_to(ConfigInterface& config, const std::string& document) REQUIRES(registry_mutex);

    LoggerOwner logger;
    // Owned.
    std::map<std::string, ConfigInterface*> registry GUARDED_BY(registry_mutex);
    // All of them in the registry.
    std::set<ConfigInterface*> pending_set GUARDED_BY(registry_mutex);
    MutexOwner registry_mutex;  // recursive
    // A run is under way.
    bool configure_pending GUARDED_BY(flag_mutex) = false;
    MutexOwner flag_mutex;

    // Holds of the registry by the thread that has it.
    unsigned int holds GUARDED_BY(registry_mutex) = 0;
    // To be deleted when the outermost hold ends.
    std::vector<ConfigInterface*> removed GUARDED_BY(registry_mutex);
    // The document is being handed out.
    bool handing_out GUARDED_BY(registry_mutex) = false;

    // Referenced by each queued fetch, of any run, and by the manager: counts the queued fetches.
    const std::shared_ptr<void> queue_reference = std::make_shared<char>();

    static ConfigManagerImpl* instance_;
};

}  // namespace headsetmgmt::config
