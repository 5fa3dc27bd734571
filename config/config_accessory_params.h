// What a task that fetches a configuration document carries.

#pragma once

#include "headsetmgmt/config.h"
#include "headsetmgmt/executor.h"

#include "config/config_owner.h"

namespace headsetmgmt::config {

/// A copy of the configuration object that the fetch is for, and how long the task may wait.
class ConfigAccessoryParams : public TaskParametersInterface {
public:
    /// Clones `object`, if there is one. Runs when the accessory's firmware data are ready, and
    /// after 60 seconds all the same. When the object's retry counter is not 0, waits 30 to 40
    /// seconds first.
    explicit ConfigAccessoryParams(ConfigInterface* object);
    ConfigAccessoryParams(const ConfigAccessoryParams& other);

    TaskParametersInterface* clone() const override;
    int get_type() const override;
    int check_status() override;
    unsigned int get_timeout() const override;
    unsigned int get_defer_time() const override;

    /// The copy; null when there was nothing to copy. Stays with the parameters.
    ConfigInterface* get_config() const;

private:
    ConfigOwner config;
    unsigned int defer_time = 0;  // seconds
    unsigned int timeout = 60;    // seconds
};

}  // namespace headsetmgmt::config
