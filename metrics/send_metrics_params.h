// SPDX-License-Identifier: Apache-2.0
// Parameters of a task that sends an inventory report.

#pragma once

#include <memory>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/executor.h"

namespace headsetmgmt::metrics {

/// A copy of the accessory to report, and how long the task may wait.
class SendMetricsParams : public TaskParametersInterface {
public:
    /// Clones `info` unless it is null. The task runs when the accessory's data are ready, after
    /// 120 seconds in any case.
    explicit SendMetricsParams(const AccessoryInfoInterface* info);
    SendMetricsParams(const SendMetricsParams& other);

    TaskParametersInterface* clone() const override;
    int get_type() const override;
    int check_status() override;
    unsigned int get_timeout() const override;
    unsigned int get_defer_time() const override;

    /// The copy, null if `info` was null. Owned by the parameters.
    AccessoryInfoInterface* get_accessory() const;

private:
    std::unique_ptr<AccessoryInfoInterface> accessory;
    unsigned int defer_time = 0;  // seconds
    unsigned int timeout = 120;   // seconds
};

}  // namespace headsetmgmt::metrics
