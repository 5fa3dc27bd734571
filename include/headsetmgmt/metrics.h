// SPDX-License-Identifier: Apache-2.0
// Sending the inventory report of an accessory.

#pragma once

#include <cstdint>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/export.h"

namespace headsetmgmt::metrics {

/// Kind of report.
enum METRICS_TYPE : std::int32_t { HEADSET_INVENTORY = 0, CAMERA_INVENTORY = 1 };

/// Reports one accessory to the inventory service.
///
/// Made by `create_metric`, deleted by `delete_metric`, at the earliest when `send` has returned.
class MetricsInterface {
public:
    virtual ~MetricsInterface() = default;

    /// Queues the report. Always true; throws what copying the accessory throws. The log has the
    /// result of the sending. Any thread.
    virtual bool send() = 0;

    virtual METRICS_TYPE get_type() const = 0;
};

}  // namespace headsetmgmt::metrics

/// Makes the metric object of a headset or a camera, with a clone of `accessory`; the caller
/// deletes it with `delete_metric`. Any thread. Throws `std::runtime_error`:
/// - "metrics factory: accessory is empty" for null;
/// - "metrics factory: Unsupported METRICS_TYPE: " for another type, without its first characters,
///   as many as the value of the type;
/// - "plugins hasn't been initialized properly" when no complete plug-in record is installed.
HEADSETMGMT_EXPORT headsetmgmt::metrics::MetricsInterface*
create_metric(headsetmgmt::AccessoryInfoInterface* accessory);

/// Deletes a metric object; null is ignored. Any thread.
HEADSETMGMT_EXPORT void delete_metric(headsetmgmt::metrics::MetricsInterface* metric);

namespace headsetmgmt::metrics {

// The same two functions, also in the namespace of their class.
using ::create_metric;
using ::delete_metric;

}  // namespace headsetmgmt::metrics
