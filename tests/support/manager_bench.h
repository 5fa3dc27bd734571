// SPDX-License-Identifier: Apache-2.0
// The configuration manager among fakes, with what many of its tests need.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "headsetmgmt/config_manager.h"
#include "headsetmgmt/plugins.h"

#include "config/config_manager_impl.h"
#include "support/fake_accessory.h"
#include "support/fake_config.h"
#include "support/fake_plugins.h"

namespace headsetmgmt::test_support {

/// Makes the manager on the first use and deletes it, and what is still queued, at its own end.
class ManagerBench {
public:
    ManagerBench() = default;
    ~ManagerBench() {
        plugins.log.hook = nullptr;
        plugins.config_driver.hook = nullptr;
        init(plugins.record);
        config::delete_config_manager();
        plugins.executor.drop_all();
    }

    ManagerBench(const ManagerBench&) = delete;
    ManagerBench& operator=(const ManagerBench&) = delete;

    FakePlugins plugins;
    FakeAccessory headset;  ///< what `attach` attaches

    config::ConfigManagerImpl& manager() { return *config::ConfigManagerImpl::get_instance(); }

    std::string attach(const std::string& id) {
        return manager().initialize_accessory(id, &headset);
    }

    /// Registers a fake object, which the manager owns.
    FakeConfig* add_fake(const std::string& id) {
        auto* object = new FakeConfig(id, &headset);
        manager().add_config_object(id, object);
        return object;
    }

    /// What every fetch is answered with from now on.
    void answer_with(int status, const std::string& document) {
        plugins.dispatcher.answer = {status, document};
    }

    bool succeed(std::string document) { return manager().on_fetch_config_success(document); }

    /// Log lines since the last call.
    Lines take_lines() { return with_levels(plugins.log.take()); }

    /// Calls of the driver since the last call.
    Lines take_driver_calls() { return plugins.config_driver.take_calls(); }

    std::size_t run_tasks() { return plugins.executor.run_all(); }
    std::size_t queued() const { return plugins.executor.size(); }
    unsigned int queued_defer_time() const { return plugins.executor.params()->get_defer_time(); }
    unsigned int queued_timeout() const { return plugins.executor.params()->get_timeout(); }

    /// URLs of all requests so far.
    Lines urls() const {
        Lines urls;
        for (const DispatchedRequest& request : plugins.dispatcher.requests()) {
            urls.push_back(request.context.url);
        }
        return urls;
    }
};

}  // namespace headsetmgmt::test_support
