// The inventory report of one accessory, and its sending.

#pragma once

#include <cstdint>

#include "headsetmgmt/accessory_info.h"
#include "headsetmgmt/export.h"

namespace headsetmgmt::metrics {

/// What a metric object reports.
enum METRICS_TYPE : std::int32_t { HEADSET_INVENTORY = 0, CAMERA_INVENTORY = 1 };

/// Reports one accessory to the inventory service.
///
/// Made by `create_metric`, deleted by `delete_metric`, which may be done as soon as `send`
/// returns.
class MetricsInterface {
public:
    virtual ~MetricsInterface() = default;

    /// Queues the report. Always true, or throws what copying the accessory throws; the log says
    /// how the sending went. Any thread.
    virtual bool send() = 0;

    virtual METRICS_TYPE get_type() const = 0;
};

}  // namespace headsetmgmt::metrics

/// A new metric object for a headset or a camera, of which it keeps a clone; the caller deletes it
/// with `delete_metric`. Throws `std::runtime_error`: "metrics factory: accessory is empty" for
/// null; for any other type the text "metrics factory: Unsupported METRICS_TYPE: ", which starts as
/// many characters further in as the type's value says; "plugins hasn't been initialized properly"
/// when no complete plug-in record is installed. Any thread.
HEADSETMGMT_EXPORT headsetmgmt::metrics::MetricsInterface*
create_metric(headsetmgmt::AccessoryInfoInterface* accessory);

/// Deletes a metric object; null is ignored. Any thread.
HEADSETMGMT_EXPORT void delete_metric(headsetmgmt::metrics::MetricsInterface* metric);

namespace headsetmgmt::metrics {

// The same two functions, found beside what they make and delete as well.
using ::create_metric;
using ::delete_metric;

}  // namespace headsetmgmt::metrics
