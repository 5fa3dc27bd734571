// SPDX-License-Identifier: Apache-2.0
// What the tests of configuration objects share: an object whose members are open, and its world.

#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <cjson/cJSON.h>

#include "config/config_impl.h"
#include "core/json.h"
#include "support/fake_accessory.h"
#include "support/fake_plugins.h"

namespace headsetmgmt::test_support {

using Calls = Lines;     ///< calls of the configuration driver
using Settings = Lines;  ///< "<usage id> <name>=<value> (<access>)"

/// A headset's configuration object, its members open to the tests.
class OpenConfig : public config::HeadsetConfigImpl {
public:
    using HeadsetConfigImpl::HeadsetConfigImpl;

    using ConfigImpl::current_model;
    using ConfigImpl::last_updated_time;
    using ConfigImpl::logger_name;
    using ConfigImpl::pending_firmware;
    using ConfigImpl::settings;
};

/// A headset without facts, and recording fakes in the plug-in record. Declare it before the
/// objects that use it.
struct ConfigBench {
    FakePlugins plugins;
    FakeAccessory accessory;

    /// All lines so far, such as "info HeadsetConfigImpl: update_from_server: success".
    Lines lines() const { return with_levels(plugins.log.lines()); }

    void clear_lines() { plugins.log.take(); }

    /// All calls so far, as `FakeConfigDriver` writes them.
    Calls driver_calls() const { return plugins.config_driver.calls(); }

    /// How many locks are held right now.
    int locks_held() const { return plugins.mutex_factory.held(); }
};

/// The object's settings map in its order.
inline Settings settings_of(config::ConfigInterface& object) {
    Settings settings;
    for (const auto& [key, setting] : object.retrieve_config()) {
        settings.push_back(std::to_string(key) + " " + setting.name + "=" + setting.value + " (" +
                           setting.access + ")");
    }
    return settings;
}

inline JsonOwner parse(const std::string& text) {
    return JsonOwner(cJSON_Parse(text.c_str()));
}

}  // namespace headsetmgmt::test_support
