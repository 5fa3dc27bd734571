// SPDX-License-Identifier: Apache-2.0
// A configuration object whose answers the test chooses, and that records what was asked of it.

#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/config.h"

namespace headsetmgmt::test_support {

/// Answers what its script says. A copy shares the script with the object that it was made of, so
/// that a test can look into copies that the code under test made and deleted.
///
/// One thread at a time.
class FakeConfig : public config::ConfigInterface {
public:
    /// What an object and its copies share.
    struct Script {
        std::string url = "http://server/defaultheadsetconfig.json";
        std::map<int, ConfigParam> settings;
        bool required = true;               ///< answer of `is_config_required`
        bool accepts_document = true;       ///< answer of `update_from_server`
        bool accepts_setting = true;        ///< answer of `update_from_host`
        bool accepts_reset = true;          ///< answer of `reset_config`
        std::function<void()> on_document;  ///< called from inside `update_from_server`
        std::function<void()> on_setting;   ///< called from inside `update_from_host`
        std::function<void()> on_clone;     ///< called from inside `clone`
        std::function<void()> on_retries;   ///< called from inside `set_config_retries`
        std::function<void()> on_end;       ///< called from inside the destructor

        std::vector<std::string> documents;      ///< passed to `update_from_server`
        std::vector<std::string> stamps;         ///< passed to `is_config_required`
        std::vector<std::string> host_settings;  ///< "name|usage id|value" of `update_from_host`
        std::vector<int> retries_at_url;         ///< retry counter at each `get_config_url`
        std::vector<int> retries_set;            ///< passed to `set_config_retries`
        int resets = 0;
        int updates = 0;
    };

    /// Keeps a clone of `info`, which must not be null.
    FakeConfig(const std::string& id, const AccessoryInfoInterface* info)
        : script(std::make_shared<Script>()), accessory_id(id), accessory(info->clone()) {
        ++live_;
    }
    ~FakeConfig() override {
        --live_;
        if (script->on_end) {
            script->on_end();
        }
    }

    /// Objects alive in the whole process, copies included.
    static int live_count() { return live_; }

    bool update_from_server(const std::string& document) override {
        const std::shared_ptr<Script> kept = script;
        kept->documents.push_back(document);
        if (kept->on_document) {
            kept->on_document();
        }
        return script->accepts_document;
    }
    bool update_from_host(const std::string& name, int usage_id,
                          const std::string& value) override {
        script->host_settings.push_back(name + "|" + std::to_string(usage_id) + "|" + value);
        if (script->on_setting) {
            script->on_setting();
        }
        return script->accepts_setting;
    }
    std::string get_config_url() const override {
        script->retries_at_url.push_back(get_config_retries());
        return script->url;
    }
    void apply_config_to_device(config::ApplyType /*type*/) const override {}
    std::map<int, ConfigParam> retrieve_config() override { return script->settings; }
    ACCESSORY_TYPE get_type() const override { return accessory->get_type(); }
    const AccessoryInfoInterface* get_accessory() const override { return accessory.get(); }
    std::string get_accessory_id() const override { return accessory_id; }
    void set_config_retries(int retries) override {
        script->retries_set.push_back(retries);
        if (script->on_retries) {
            script->on_retries();
        }
        ConfigInterface::set_config_retries(retries);
    }
    bool is_config_required(const std::string& version_stamp) const override {
        script->stamps.push_back(version_stamp);
        return script->required;
    }
    bool reset_config() override {
        ++script->resets;
        return script->accepts_reset;
    }
    bool update(const AccessoryInfoInterface* info) override {
        ++script->updates;
        accessory.reset(info->clone());
        return true;
    }
    ConfigInterface* clone() override {
        if (script->on_clone) {
            script->on_clone();
        }
        return new FakeConfig(*this);
    }

    const std::shared_ptr<Script> script;

private:
    FakeConfig(const FakeConfig& other)
        : ConfigInterface(other), script(other.script), accessory_id(other.accessory_id),
          accessory(other.accessory->clone()) {
        ++live_;
    }

    std::string accessory_id;
    std::unique_ptr<AccessoryInfoInterface> accessory;

    inline static std::atomic<int> live_{0};
};

}  // namespace headsetmgmt::test_support
