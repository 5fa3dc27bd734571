// SPDX-License-Identifier: Apache-2.0
// Parameters of a task that sends an inventory report.

#include "metrics/send_metrics_params.h"

#include "headsetmgmt/plugins.h"

namespace headsetmgmt::metrics {

SendMetricsParams::SendMetricsParams(const AccessoryInfoInterface* info)
    : accessory(info != nullptr ? info->clone() : nullptr) {}

SendMetricsParams::SendMetricsParams(const SendMetricsParams& other)
    : TaskParametersInterface(other),
      accessory(other.accessory ? other.accessory->clone() : nullptr), defer_time(other.defer_time),
      timeout(other.timeout) {}

TaskParametersInterface* SendMetricsParams::clone() const {
    return new SendMetricsParams(*this);
}

int SendMetricsParams::get_type() const {
    return send_inventory;
}

int SendMetricsParams::check_status() {
    if (globals::plugins.system_info == nullptr) {
        return drop;
    }
    // Without an accessory the task runs at once and fails.
    if (!accessory || accessory->data_ready()) {
        return ready;
    }
    constexpr unsigned int seconds_to_next_look = 6;
    defer_time = seconds_to_next_look;
    return not_ready;
}

unsigned int SendMetricsParams::get_timeout() const {
    return timeout;
}

unsigned int SendMetricsParams::get_defer_time() const {
    return defer_time;
}

AccessoryInfoInterface* SendMetricsParams::get_accessory() const {
    return accessory.get();
}

}  // namespace headsetmgmt::metrics
