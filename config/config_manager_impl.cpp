// SPDX-License-Identifier: Apache-2.0
// The manager's registry: accessories are attached, queried, changed and removed.

#include "config/config_manager_impl.h"

#include <cstddef>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>

#include "headsetmgmt/plugins.h"

#include "config/config_owner.h"

namespace headsetmgmt::config {

ConfigManagerImpl* ConfigManagerImpl::instance_ = nullptr;

ConfigManagerImpl* ConfigManagerImpl::get_instance() {
    if (!globals::plugins.is_valid()) {
        throw std::runtime_error("plugins hasn't been initialized properly");
    }
    if (instance_ == nullptr) {
        instance_ = new ConfigManagerImpl();
    }
    return instance_;
}

void ConfigManagerImpl::delete_instance() {
    delete std::exchange(instance_, nullptr);
}

ConfigManager* create_config_manager() {
    return ConfigManagerImpl::get_instance();
}

void delete_config_manager() {
    ConfigManagerImpl::delete_instance();
}

ConfigManagerImpl::RegistryHold::RegistryHold(ConfigManagerImpl& manager) : owner(manager) {
    owner.registry_mutex.lock();
    ++owner.holds;
}

ConfigManagerImpl::RegistryHold::~RegistryHold() {
    if (owner.holds == 1) {
        // One by one: deleting an object may remove further ones.
        while (!owner.removed.empty()) {
            ConfigInterface* config = owner.removed.back();
            owner.removed.pop_back();
            delete_config(config);
        }
    }
    --owner.holds;
    owner.registry_mutex.unlock();
}

ConfigManagerImpl::ConfigManagerImpl()
    : logger(make_logger("Lib::ConfigManagerImpl")), registry_mutex(make_mutex(true)),
      flag_mutex(make_mutex(false)) {}

ConfigManagerImpl::~ConfigManagerImpl() {
    delete_objects();
    registry_mutex.reset();
    flag_mutex.reset();
    logger.reset();
}

void ConfigManagerImpl::delete_objects() {
    const RegistryHold hold(*this);
    for (const auto& entry : registry) {
        delete_config(entry.second);
    }
    registry.clear();
    pending_set.clear();
}

std::string ConfigManagerImpl::initialize_accessory(const std::string& id,
                                                    const AccessoryInfoInterface* info) {
    const RegistryHold hold(*this);
    logger->notice() << "initialize_accessory: called for id: " << id;
    if (info == nullptr) {
        // No separator: the text is fixed.
        logger->error() << "initialize_accessoryno accessory info for id: " << id;
        return {};
    }
    ConfigInterface* config = find(id);
    if (config != nullptr) {
        config->update(info);
    } else {
        config = create_accessory(id, info);
    }
    if (config == nullptr) {
        return {};
    }
    return configure_accessory(id, "") ? id : std::string();
}

void ConfigManagerImpl::remove_accessory(const std::string& id) {
    const RegistryHold hold(*this);
    logger->notice() << "remove_accessory: ENTER";
    const auto entry = registry.find(id);
    if (entry == registry.end()) {
        return;
    }
    // Removed before the line is written: the log callback may remove the accessory again, or
    // attach it.
    const std::size_t erased = forget(entry);
    logger->notice() << "remove_accessory: erased [" << erased << "] pending config";
    if (pending_set.empty()) {
        set_configure_accessory_pending(false);
    }
}

bool ConfigManagerImpl::reset_to_admin_defaults(const std::string& id) {
    const RegistryHold hold(*this);
    logger->notice() << "reset_to_admin_defaults: ENTER";
    ConfigInterface* config = find(id);
    if (config == nullptr) {
        logger->notice() << "reset_to_admin_defaults: Config object of this type does not exist";
        return false;
    }
    return config->reset_config();
}

std::map<int, ConfigParam> ConfigManagerImpl::retrieve_config(const std::string& id) {
    const RegistryHold hold(*this);
    logger->notice() << "retrieve_config: ENTER";
    ConfigInterface* config = find(id);
    if (config == nullptr) {
        logger->warning() << "retrieve_config: No config object";
        return {};
    }
    return config->retrieve_config();
}

std::string ConfigManagerImpl::retrieve_config(const std::string& id, int key) {
    logger->notice() << "retrieve_config: ENTER";
    const std::map<int, ConfigParam> settings = retrieve_config(id);
    const auto setting = settings.find(key);
    // The first of the setting's texts is its name.
    return setting != settings.end() ? setting->second.name : std::string();
}

bool ConfigManagerImpl::update_config_from_host(const std::string& id, const std::string& name,
                                                int usage_id, const std::string& value) {
    const RegistryHold hold(*this);
    logger->notice() << "update_config_from_host: ENTER";
    ConfigInterface* config = find_accessory(id);
    if (config == nullptr) {
        return false;
    }
    try {
        config->update_from_host(name, usage_id, value);
    } catch (const std::exception& error) {
        logger->error() << "update_config_from_host: " << error.what();
        return false;
    }
    // The object's result is not used.
    return true;
}

void ConfigManagerImpl::add_config_object(const std::string& id, ConfigInterface* config) {
    const RegistryHold hold(*this);
    registry[id] = config;
}

ConfigInterface* ConfigManagerImpl::get_config_object(const std::string& id) {
    const RegistryHold hold(*this);
    return find(id);
}

unsigned int ConfigManagerImpl::get_number_of_configs() {
    const RegistryHold hold(*this);
    return static_cast<unsigned int>(registry.size());
}

ConfigInterface* ConfigManagerImpl::get_accessory(const std::string& id) {
    const RegistryHold hold(*this);
    return find_accessory(id);
}

ConfigInterface* ConfigManagerImpl::create_accessory(const std::string& id,
                                                     const AccessoryInfoInterface* info) {
    const RegistryHold hold(*this);
    logger->info() << "create_accessory: Creating Config object for id: " << id;
    ConfigOwner made(create_config(id, info));
    if (!made) {
        logger->error() << "create_accessory: failed to create Config object";
        return nullptr;
    }
    // On the lines above, the log callback may have attached the same accessory.
    const auto earlier = registry.find(id);
    if (earlier != registry.end()) {
        forget(earlier);
    }
    add_config_object(id, made.get());
    ConfigInterface* config = made.release();
    logger->notice() << "create_accessory: Config object created";
    return config;
}

ConfigInterface* ConfigManagerImpl::find(const std::string& id) {
    const auto entry = registry.find(id);
    if (entry == registry.end()) {
        logger->warning() << "get_config_object: Cannot find config object";
        return nullptr;
    }
    return entry->second;
}

ConfigInterface* ConfigManagerImpl::find_accessory(const std::string& id) {
    ConfigInterface* config = find(id);
    if (config != nullptr) {
        logger->notice() << "get_accessory: Found accessory config object for id: " << id;
    }
    return config;
}

bool ConfigManagerImpl::is_registered(const std::string& id, const ConfigInterface* config) const {
    const auto entry = registry.find(id);
    return entry != registry.end() && entry->second == config;
}

/// Removes an object from registry and pending set; it is deleted when the outermost hold ends.
/// Returns how often it was pending.
std::size_t ConfigManagerImpl::forget(std::map<std::string, ConfigInterface*>::iterator entry) {
    removed.push_back(entry->second);
    const std::size_t erased = pending_set.erase(entry->second);
    registry.erase(entry);
    return erased;
}

}  // namespace headsetmgmt::config
