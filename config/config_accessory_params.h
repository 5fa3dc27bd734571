// What a task that fetches a configuration document carries.

#pragma once

#include "headsetmgmt/config.h"
#include "headsetmgmt/executor.h"

#include "core/owners.h"

namespace headsetmgmt::config {

/// What a fetch is to its run.
enum class FetchKind {
    first,
    retry,    // after a failure
    reserve,  // in place of a retry, should the answer that the run waits for never come
};

/// A copy of the configuration object that the fetch is for, and how long the task may wait.
class ConfigAccessoryParams : public TaskParametersInterface {
public:
    /// Clones `object`. Runs when the accessory's firmware data are ready, and after 60 seconds all
    /// the same; one in reserve, and the fetch of an object that was tried before, wait 30 to 40
    /// seconds first.
    explicit ConfigAccessoryParams(ConfigInterface* object,
                                   FetchKind fetch_kind = FetchKind::first);
    ConfigAccessoryParams(const ConfigAccessoryParams& other);

    TaskParametersInterface* clone() const override;
    int get_type() const override;
    int check_status() override;
    unsigned int get_timeout() const override;
    unsigned int get_defer_time() const override;

    FetchKind get_kind() const;

    /// The copy; null when there was nothing to copy. Stays with the parameters.
    ConfigInterface* get_config() const;

private:
    ConfigOwner config;
    unsigned int defer_time = 0;  // seconds
    unsigned int timeout = 60;    // seconds
    FetchKind kind;
};

}  // namespace headsetmgmt::config
