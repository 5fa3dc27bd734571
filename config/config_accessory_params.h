// SPDX-License-Identifier: Apache-2.0
// Parameters of a task that fetches a configuration document.

#pragma once

#include "headsetmgmt/config.h"
#include "headsetmgmt/executor.h"

#include "config/config_owner.h"

namespace headsetmgmt::config {

/// A copy of the configuration object, and how long the task may wait.
class ConfigAccessoryParams : public TaskParametersInterface {
public:
    /// Clones `object` unless it is null. The task runs when the accessory's firmware data are
    /// ready, after 60 seconds in any case. If the object's retry counter is not 0, it waits 30 to
    /// 40 seconds first.
    explicit ConfigAccessoryParams(ConfigInterface* object);
    ConfigAccessoryParams(const ConfigAccessoryParams& other);

    TaskParametersInterface* clone() const override;
    int get_type() const override;
    int check_status() override;
    unsigned int get_timeout() const override;
    unsigned int get_defer_time() const override;

    /// The copy, null if `object` was null. Owned by the parameters.
    ConfigInterface* get_config() const;

private:
    ConfigOwner config;
    unsigned int defer_time = 0;  // seconds
    unsigned int timeout = 60;    // seconds
};

}  // namespace headsetmgmt::config
